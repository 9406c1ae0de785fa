// One edge of an MPEG stream, its first or its last second, held in memory.
#pragma once

#include <cstdint>
#include <vector>

namespace atdp {

// Frame numbers count from the start of the decoded stream, before anything is cut.
struct ProcessInfo {
    bool ready_ = false;             // samples_ and border_frame_ are there
    std::uint64_t start_frame_ = 0;  // the first frame covered
    std::uint64_t end_frame_ = 0;    // one past the last frame covered

    // The frames covered, interleaved, from start_frame_ on; zeros where the data ended early. The
    // end record has room for a whole second also where it covers less.
    std::vector<float> samples_;

    // Start record: the first frame to deliver. End record: how many of its frames are delivered.
    std::uint64_t border_frame_ = 0;
};

}  // namespace atdp
