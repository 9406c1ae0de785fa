// What the tests of the record of MP4 atoms share.
#pragma once

#include <gtest/gtest.h>

#include <string>

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

}  // namespace atdp
