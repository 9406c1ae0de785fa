// What the tests of the gapless comment share.
#pragma once

#include <string>

#include "metadata/gapless_comment.h"
#include "tests/support/metadata_test.h"

namespace atdp {

// A file with a tag.
class GaplessCommentTest : public MetadataTest {
 protected:
    GaplessCommentTest() {
        const std::string tag = "ID3 tag";
        for (const char byte : tag)
            platform().fileProperties["id3t"].push_back(static_cast<std::byte>(byte));
        platform().tag = scripted::gaplessTag("0 1 2 3");
    }

    // The counts as text, or "none", with nothing written.
    std::string read() const {
        AudioFilePacketTableInfo table{-7, -8, -9};
        const bool found = getAudioFilePacketTableInfoFromID3tag(&table, file_);
        const std::string counts = std::to_string(table.mNumberValidFrames) + ' ' +
                                   std::to_string(table.mPrimingFrames) + ' ' +
                                   std::to_string(table.mRemainderFrames);
        return found ? counts : counts == "-7 -8 -9" ? "none" : "half";
    }
};

}  // namespace atdp
