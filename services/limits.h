// Bounds on what a file may claim and a client may ask for.
#pragma once

#include <cstddef>
#include <cstdint>

namespace atdp::services {

// Channels of a file or a client. No format played here has more, and a frame of that many floats
// still fits any buffer in use.
inline constexpr std::uint32_t kMaxChannels = 64;

// Rates that a file may state, in Hz: what a 32-bit field of WAVE can hold.
inline constexpr double kMinFileRate = 1.0;
inline constexpr double kMaxFileRate = 4'294'967'295.0;

// Bytes read from a file at a time while it plays: large enough that the calls cost little beside
// the copying, small enough to stay in the processor's second-level cache.
inline constexpr std::size_t kReadBlockBytes = 64 * 1024;

// Bytes read at a time while a container's headers are looked at.
inline constexpr std::size_t kHeaderBlockBytes = 4 * 1024;

// Chunks of one file that are looked at: far beyond any real file, and few enough that a file of
// nothing but empty chunks is dealt with at once.
inline constexpr std::size_t kMaxChunks = 65'536;

}  // namespace atdp::services
