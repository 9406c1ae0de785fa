// Files with something to cut at their ends.
#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>

#include "tests/support/mp3_decoder_test.h"

namespace atdp {

using SampleFunction = std::function<float(std::int64_t, std::uint32_t)>;

// Frames from `first` up to `end` hold the quiet samples, all others their own.
inline SampleFunction quiet(std::int64_t first, std::int64_t end, float left, float right) {
    return [=](std::int64_t frame, std::uint32_t channel) {
        if (frame < first || frame >= end) return sampleAt(frame, channel);
        return channel == 0 ? left : right;
    };
}

struct Edge {
    const char* name;
    std::optional<double> threshold;
    SampleFunction sample;
    std::string comment;  // gapless, of the tag
    std::optional<AudioFilePacketTableInfo> table;
    const char* played;
    std::int32_t reported;  // priming or remainder frames, after delivery
    std::int64_t frames = 450;
    std::int64_t missing = 0;
};

class EdgeTest : public Mp3DecoderTest {
 protected:
    std::unique_ptr<AudioToolboxMP3Decoder> openCase(const Edge& edge) {
        startCase();
        setFile(edge.frames);
        platform().framesMissing = edge.missing;
        if (edge.sample) platform().sample = edge.sample;
        if (!edge.comment.empty()) setGaplessComment(edge.comment);
        if (edge.table) platform().fileProperties["pnfo"] = scripted::bytesOf(*edge.table);
        Options options;
        if (edge.threshold) options[DECODER_OPTION_KEY_MP3_THREASHOLD_DB] = *edge.threshold;
        return openDecoder(&options);
    }
};

}  // namespace atdp
