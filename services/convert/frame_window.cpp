#include "services/convert/frame_window.h"

#include <algorithm>

namespace atdp::services {
namespace {

constexpr std::uint32_t kBlockFrames = 2048;
constexpr std::size_t kRoomFrames = 8 * kBlockFrames;

}  // namespace

FrameWindow::FrameWindow(FrameReader& source, std::uint32_t channels)
    : source_(source), channels_(channels), frames_(kRoomFrames * channels) {}

bool FrameWindow::fill() {
    if (position_ < end()) return true;
    if (end() <= kept_ || held_ + kBlockFrames > kRoomFrames) {
        first_ = position_;
        held_ = 0;
    }
    float* const block = frames_.data() + held_ * channels_;
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
