// What the tests of INFO lists share.
#pragma once

#include <cstdint>
#include <string>
#include <utility>
#include <vector>

#include "metadata/riff_info.h"
#include "tests/support/metadata_test.h"

namespace atdp {

// Where INAM is found among the bytes; -1 where it is not.
inline std::ptrdiff_t offsetOfName(const std::string& text, std::size_t available) {
    const std::vector<std::uint8_t> bytes(text.begin(), text.end());
    const std::uint8_t* found =
        findChunk(0x494E414D, bytes.data(), static_cast<std::uint32_t>(available));
    return found == nullptr ? -1 : found - bytes.data();
}

class RiffInfoTest : public MetadataTest {
 protected:
    Lines read(MetadataList list = {}) const {
        return readFrom(checkMetaDataAsWavFile, std::move(list));
    }

    std::vector<std::string>& lists = platform().userData["LIST"];
};

}  // namespace atdp
