// A bounded reader over bytes in memory.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>

namespace atdp::services {

using Bytes = std::span<const std::byte>;

// The first sizeof(Integer) bytes at `bytes` as a number.
template <class Integer>
Integer loadBigEndian(const std::byte* bytes) {
    Integer value{};
    for (std::size_t i = 0; i < sizeof(Integer); ++i)
        value = static_cast<Integer>(static_cast<std::uint64_t>(value) << 8 |
                                     std::to_integer<std::uint64_t>(bytes[i]));
    return value;
}
template <class Integer>
Integer loadLittleEndian(const std::byte* bytes) {
    Integer value{};
    for (std::size_t i = sizeof(Integer); i-- > 0;)
        value = static_cast<Integer>(static_cast<std::uint64_t>(value) << 8 |
                                     std::to_integer<std::uint64_t>(bytes[i]));
    return value;
}

// Reads numbers one after the other. A read past the end gives 0 and marks the cursor as failed;
// a parser reads a whole header and then asks once whether it was there.
class ByteCursor {
 public:
    explicit ByteCursor(Bytes bytes) : bytes_(bytes) {}

    std::size_t remainingBytes() const { return bytes_.size(); }
    bool failed() const { return failed_; }

    template <class Integer>
    Integer bigEndian() {
        const Bytes taken = take(sizeof(Integer));
        return failed_ ? Integer{} : loadBigEndian<Integer>(taken.data());
    }
    template <class Integer>
    Integer littleEndian() {
        const Bytes taken = take(sizeof(Integer));
        return failed_ ? Integer{} : loadLittleEndian<Integer>(taken.data());
    }

    // The next `count` bytes, or none.
    Bytes take(std::size_t count) {
        if (count > bytes_.size()) {
            failed_ = true;
            bytes_ = {};
            return {};
        }
        const Bytes taken = bytes_.first(count);
        bytes_ = bytes_.subspan(count);
        return taken;
    }
    void skip(std::size_t count) { take(count); }

 private:
    Bytes bytes_;
    bool failed_ = false;
};

}  // namespace atdp::services
