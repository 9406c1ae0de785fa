// What the tests of the base decoder's metadata share.
#pragma once

#include "tests/support/byte_builder.h"
#include "tests/support/metadata_test.h"
#include "tests/support/wav_decoder_test.h"

namespace atdp {

// A WAVE file that every source knows something of.
class WavDecoderMetadataTest : public WavDecoderTest {
 protected:
    WavDecoderMetadataTest() {
        platform().fileProperties["ffmt"] = scripted::bytesOf(kAudioFileWAVEType);
        platform().userData["id3 "] = {"tag"};
        platform().tag = dictionary({{"TIT2", {"tag title"}}, {"TPE1", {"tag artist"}}});
        platform().userData["LIST"] = {test::infoList("list title", "list artist")};
        platform().information = dictionary({{"title", {"title"}},
                                             {"artist", {"artist"}},
                                             {"track number", {"3/12"}},
                                             {"nominal bit rate", {"128000"}},
                                             {"source bit depth", {"24"}}});
    }

    Lines read() const { return linesOf(*openDecoder()->getMetaData()); }
};

}  // namespace atdp
