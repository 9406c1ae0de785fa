#pragma once

#include <cstdint>
#include <cstring>

#include "services/io/byte_cursor.h"

namespace atdp::services {

// Reads bits, the highest of a byte first. Past the end there are zeros, and isPastEnd() tells.
//
// The loop over the residuals lives on this: it works on a copy, which the compiler keeps in
// registers.
class AlacBitReader {
 public:
    explicit AlacBitReader(Bytes bytes) : bytes_(bytes.data()), size_(bytes.size()) { refill(); }

    // Makes the next 56 bits available to head() and drop().
    void refill() {
        window_ |= wordAt(next_) >> available_;
        next_ += (63 - available_) >> 3;
        available_ |= 56;
    }
    // The next bits, from the highest on.
    std::uint64_t head() const { return window_; }
    void drop(unsigned bits) {
        window_ <<= bits;
        available_ -= bits;
    }

    // The next 1 to 32 bits.
    std::uint32_t read(unsigned bits) {
        refill();
        const auto value = static_cast<std::uint32_t>(window_ >> (64 - bits));
        drop(bits);
        return value;
    }

    std::uint64_t position() const { return std::uint64_t{8} * next_ - available_; }
    void seek(std::uint64_t position) {
        next_ = position / 8;
        window_ = 0;
        available_ = 0;
        refill();
        drop(position % 8);
    }
    bool isPastEnd() const { return position() > std::uint64_t{8} * size_; }

 private:
    std::uint64_t wordAt(std::size_t offset) const {
        if (size_ >= 8 && offset <= size_ - 8) [[likely]] {
            std::uint64_t word;
            std::memcpy(&word, bytes_ + offset, sizeof word);
            return __builtin_bswap64(word);
        }
        return lastWordAt(bytes_, size_, offset);
    }
    // Static, so that no reader needs an address for it.
    [[gnu::noinline]] static std::uint64_t lastWordAt(const std::byte* bytes, std::size_t size,
                                                      std::size_t offset) {
        std::uint64_t word = 0;
        for (std::size_t i = offset; i < offset + 8; ++i)
            word = word << 8 | (i < size ? std::to_integer<std::uint64_t>(bytes[i]) : 0);
        return word;
    }

    const std::byte* bytes_;
    std::size_t size_;
    std::size_t next_ = 0;      // offset of the first byte that is not wholly in the window
    std::uint64_t window_ = 0;  // may hold bits of that byte and later ones already
    unsigned available_ = 0;    // bits of the window that count as read
};

}  // namespace atdp::services
