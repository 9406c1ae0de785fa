#include "services/convert/frame_window.h"

#include <algorithm>

namespace atdp::services {
namespace {

constexpr std::uint32_t kBlockFrames = 1024;
constexpr std::size_t kKeptFrames = 8192;

}  // namespace

FrameWindow::FrameWindow(FrameReader& source, std::uint32_t channels)
    : source_(source), channels_(channels), frames_((kKeptFrames + kBlockFrames) * channels) {}

bool FrameWindow::fill() {
    if (position_ < end()) return true;
    const std::size_t kept = std::min(kKeptFrames, held_);
    std::copy_n(frames_.data() + (held_ - kept) * channels_, kept * channels_, frames_.data());
    first_ += held_ - kept;
    held_ = kept;
    float* const block = frames_.data() + kept * channels_;
    std::uint32_t frames = kBlockFrames;
    if (!source_.read(block, &frames)) return false;
    if (frames == 0) {
        frames = kBlockFrames;
        std::fill_n(block, std::size_t{frames} * channels_, 0.0F);
    }
    held_ += frames;
    return true;
}

std::span<const float> FrameWindow::samples() const {
    const auto spent = static_cast<std::size_t>(position_ - first_);
    return {frames_.data() + spent * channels_, (held_ - spent) * channels_};
}

void FrameWindow::goTo(std::uint64_t frame) {
    position_ = frame;
    if (first_ <= frame && frame <= end()) return;
    source_.seek(frame);
    first_ = frame;
    held_ = 0;
}

}  // namespace atdp::services
