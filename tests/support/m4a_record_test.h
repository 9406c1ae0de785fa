// What the tests of the record of MP4 atoms share.
#pragma once

#include <gtest/gtest.h>

#include <string>
#include <utility>

#include "mp4/atom_analysis.h"
#include "mp4/atom_reader.h"
#include "mp4/m4a_record.h"
#include "platform/core_audio_types.h"
#include "tests/support/atom_builder.h"
#include "tests/support/temporary_file.h"

namespace atdp {

// Analyses atoms by themselves or in a file, and reads the record back.
class M4aRecordTest : public ::testing::Test {
 protected:
    M4aRecordTest() { clearRecord(); }

    static void analyze(const char (&type)[5], const std::string& body) {
        vAnalizeAtomType(fourCharCode(type));
        vAnalizeAtomBody(static_cast<std::uint32_t>(body.size()), fourCharCode(type),
                         reinterpret_cast<const std::uint8_t*>(body.data()));
    }

    static void read(const std::string& moovBody) {
        const test::TemporaryFile file(test::atom("moov", moovBody));
        ASSERT_EQ(iAnalizeM4aFile(file.path()), 0);
    }

    static std::string textAt(void* field, std::size_t bytes) {
        const auto found = recordFrom(field).first(bytes);
        return {found.begin(), found.end()};
    }
};

// How often some of the atoms were found in a file of those bytes.
inline std::string found(const std::string& bytes) {
    const test::TemporaryFile file(bytes);
    EXPECT_EQ(iAnalizeM4aFile(file.path()), 0);
    std::string text;
    for (const auto& [name, count] :
         {std::pair("ftyp", m4a.ftyp.count), std::pair("moov", m4a.moov.count),
          std::pair("trak", m4a.trak.count), std::pair("mdia", m4a.mdia.count),
          std::pair("meta", m4a.meta.count), std::pair("stsd", m4a.stsd.count)})
        if (count > 0) text += (text.empty() ? "" : " ") + (name + (' ' + std::to_string(count)));
    return text;
}

}  // namespace atdp
