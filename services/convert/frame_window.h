#pragma once

#include <cstddef>
#include <cstdint>
#include <limits>
#include <span>
#include <vector>

#include "services/codecs/frame_reader.h"

namespace atdp::services {

// The frames of a source, a block at a time, and behind its last frame silence without end. Blocks
// are let go once they are spent, except from a given frame on: going back to that costs no seek in
// the source, unless it is too far back.
class FrameWindow {
 public:
    // The source must outlive the window and be read by nobody else from the first goTo() on, which
    // must come before anything else.
    FrameWindow(FrameReader& source, std::uint32_t channels);

    // Makes sure that there is at least one frame at hand. False when the source cannot be read.
    bool fill();

    // The samples at hand, from the position on.
    std::span<const float> samples() const;

    // Moves the position behind frames that are at hand, or to any frame.
    void take(std::size_t frames) { position_ += frames; }
    void goTo(std::uint64_t frame);

    // Where the position will go back to.
    void keepFrom(std::uint64_t frame) { kept_ = frame; }

 private:
    static constexpr std::uint64_t kNowhere = std::numeric_limits<std::uint64_t>::max();

    std::uint64_t end() const { return first_ + held_; }

    FrameReader& source_;
    std::uint32_t channels_;
    std::vector<float> frames_;
    std::uint64_t first_ = kNowhere;     // of the source, at the front of frames_
    std::size_t held_ = 0;               // frames there
    std::uint64_t position_ = kNowhere;  // within them, or at their end
    std::uint64_t kept_ = kNowhere;      // frames from here on
};

}  // namespace atdp::services
