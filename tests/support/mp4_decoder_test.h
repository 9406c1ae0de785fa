// What the tests of the MP4 decoder share.
#pragma once

#include <memory>
#include <string>

#include "mp4/audio_toolbox_mp4_decoder.h"
#include "platform/app_kit.h"
#include "tests/support/metadata_test.h"
#include "tests/support/temporary_file.h"

namespace atdp {

// The platform follows a script and says that the file is Apple Lossless; the atoms are in a real
// file.
class Mp4DecoderTest : public scripted::ScriptedTest {
 protected:
    Mp4DecoderTest() {
        platform().format = {44100, kAudioFormatAppleLossless, 1, 0, 4096, 0, 2, 0, 0};
        NSAppKitVersionNumber = 1137;
    }

    static void setInformation() {
        platform().information =
            dictionary({{"title", {"title"}}, {"album", {"album"}}, {"track number", {"3/12"}}});
    }

    static std::unique_ptr<SeekableFileDecoder> openDecoder(const test::TemporaryFile& file) {
        auto decoder = AudioToolboxMP4Decoder::decoderClass().make();
        EXPECT_EQ(decoder->openByPath(file.path(), nullptr), DECODER_RESULT_OK);
        platform().calls.clear();
        return decoder;
    }

    // The entries of the list but the three that tell of the format.
    static Lines tags(SeekableFileDecoder& decoder) {
        Lines lines = linesOf(*decoder.getMetaData());
        EXPECT_EQ(Lines(lines.begin(), lines.begin() + 3),
                  (Lines{"SrcSampleRate=44100.000000", "Channels=2", "SrcBits=0"}));
        return {lines.begin() + 3, lines.end()};
    }

    static Lines tagsOf(const std::string& bytes) {
        const test::TemporaryFile file(bytes);
        return tags(*openDecoder(file));
    }
};

}  // namespace atdp
