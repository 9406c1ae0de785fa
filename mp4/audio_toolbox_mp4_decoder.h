// The decoder of Apple Lossless files. It plays as its base does, and has its own way with tags.
#pragma once

#include "decoder/audio_toolbox_wav_decoder.h"

namespace atdp {

class AudioToolboxMP4Decoder final : public AudioToolboxWavDecoder {
 public:
    static const DecoderClass& decoderClass();

    // On releases of the platform that do not report the tags of MPEG-4 files, they come from the
    // file's atoms.
    std::unique_ptr<MetadataList> getMetaData() override;

 private:
    void getM4AMetaDataFor10_6(MetadataList& list) const;
};

}  // namespace atdp
