#pragma once

#include <cstdint>
#include <cstring>

#include "services/io/byte_cursor.h"

namespace atdp::services {

// Reads bits, the highest of a byte first. Past the end there are zeros, and isPastEnd() tells.
class BitReader {
 public:
    explicit BitReader(Bytes bytes) : bytes_(bytes.data()), size_(bytes.size()) {}

    // The next 57 bits or more, from the highest on.
    std::uint64_t peek() const { return wordAt(position_ / 8) << position_ % 8; }
    void skip(std::uint64_t bits) { position_ += bits; }

    // The next 1 to 32 bits.
    std::uint32_t read(unsigned bits) {
        const auto value = static_cast<std::uint32_t>(peek() >> (64 - bits));
        skip(bits);
        return value;
    }

    // In bits from the start.
    std::uint64_t position() const { return position_; }
    bool isPastEnd() const { return position_ > std::uint64_t{8} * size_; }

 private:
    std::uint64_t wordAt(std::size_t offset) const {
        if (size_ >= 8 && offset <= size_ - 8) [[likely]] {
            std::uint64_t word;
            std::memcpy(&word, bytes_ + offset, sizeof word);
            return __builtin_bswap64(word);
        }
        return lastWordAt(bytes_, size_, offset);
    }
    // Static, so that a reader needs no address and stays in registers.
    [[gnu::noinline]] static std::uint64_t lastWordAt(const std::byte* bytes, std::size_t size,
                                                      std::size_t offset) {
        std::uint64_t word = 0;
        for (std::size_t i = offset; i < offset + 8; ++i)
            word = word << 8 | (i < size ? std::to_integer<std::uint64_t>(bytes[i]) : 0);
        return word;
    }

    const std::byte* bytes_;
    std::size_t size_;
    std::uint64_t position_ = 0;
};

}  // namespace atdp::services
