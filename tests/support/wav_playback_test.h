// What the tests of the plug-in's decoder over real files share.
#pragma once

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "decoder/audio_toolbox_wav_decoder.h"
#include "platform/log.h"
#include "plugin/module.h"
#include "tests/support/temporary_file.h"
#include "tests/support/wave_builder.h"

namespace atdp::test {

// A file to play, and the log of what plays it.
class WavPlayback : public testing::Test {
 protected:
    WavPlayback() {
        AudioToolboxDecoderPluginSetLogSink(
            [](const char* line, void* log) {
                static_cast<std::vector<std::string>*>(log)->emplace_back(line);
            },
            &log_);
    }
    ~WavPlayback() override { AudioToolboxDecoderPluginSetLogSink(nullptr, nullptr); }

    std::vector<std::string> log_;
    TemporaryFile file_{WaveBuilder{.data = std::string(40'000, 'd')}.bytes()};
    AudioToolboxWavDecoder decoder_;
};

}  // namespace atdp::test
