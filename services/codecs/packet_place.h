#pragma once

#include <cstdint>

namespace atdp::services {

// Where a packet is in its file. 8 bytes: an hour of Apple Lossless takes 300 KB.
class PacketPlace {
 public:
    // Beyond these no packet is kept: a file of 4 TB, and a packet four times as large as any that
    // is decoded.
    static constexpr std::uint64_t kMaxOffset = (std::uint64_t{1} << 42) - 1;
    static constexpr std::uint64_t kMaxBytes = (std::uint64_t{1} << 22) - 1;

    // A packet without bytes: one that is not there.
    PacketPlace() = default;
    PacketPlace(std::uint64_t offset, std::uint64_t bytes) : packed_(offset << 22 | bytes) {}

    std::uint64_t offset() const { return packed_ >> 22; }
    std::uint32_t bytes() const { return static_cast<std::uint32_t>(packed_ & kMaxBytes); }

 private:
    std::uint64_t packed_ = 0;
};
static_assert(sizeof(PacketPlace) == 8);

}  // namespace atdp::services
