#include "host/frame_reader.h"

#include <algorithm>
#include <utility>

#include "host/failure.h"
#include "host/frame_exact_seek.h"

namespace atdp::host {
namespace {

constexpr std::uint32_t kMostSamples = 1u << 22;  // a request; 16 MiB of floats

}  // namespace

FrameReader::FrameReader(OpenedFile& file, ModuleLog& log, std::uint32_t requestFrames)
    : file_(file),
      log_(log),
      channels_(static_cast<std::uint32_t>(std::max(file.decoder->getChannels(), 1))),
      rate_(file.decoder->getSamplingRate()) {
    if (requestFrames == 0) requestFrames = file.decoder->getPreferredBufferSize();
    const std::uint32_t mostFrames = std::max(kMostSamples / channels_, 1u);
    const std::uint32_t frames = std::clamp(requestFrames, 1u, mostFrames);
    samples_.resize(std::size_t{frames} * channels_);
}

double FrameReader::fileFrames() const {
    return static_cast<double>(file_.decoder->getDuration()) * double{rate_} / 1e9;
}

void FrameReader::startAt(std::uint64_t frame) {
    const SeekPoint point = seekPointFor(*file_.decoderClass, *file_.decoder, frame);
    log_.forget();
    if ((point.frame > 0 || started_) &&
        file_.decoder->seek(point.nanoseconds) != DECODER_RESULT_OK) {
        throw Failure(file_.path, "seeking failed: " + log_.reason("the decoder gives no reason"));
    }
    pending_ = {};
    result_ = DECODER_RESULT_OK;
    ended_ = false;
    std::uint64_t framesToDrop = frame - point.frame;
    while (framesToDrop > 0) {
        const std::span<const float> early = next();
        if (early.empty()) return;
        const std::uint64_t frames =
            std::min<std::uint64_t>(framesToDrop, early.size() / channels_);
        pending_ = early.subspan(frames * channels_);
        framesToDrop -= frames;
    }
}

std::span<const float> FrameReader::next() {
    if (!pending_.empty()) return std::exchange(pending_, {});
    if (!ended_) {
        auto samples = static_cast<std::uint32_t>(samples_.size());
        log_.forget();
        started_ = true;
        result_ = file_.decoder->getNextSamples(samples_.data(), &samples);
        ended_ = result_ != DECODER_RESULT_OK || samples < samples_.size();
        if (samples > 0) return {samples_.data(), samples};
    }
    if (result_ != DECODER_RESULT_OK) {
        throw Failure(file_.path, "decoding failed: " + log_.reason("the decoder gives no reason"));
    }
    return {};
}

}  // namespace atdp::host
