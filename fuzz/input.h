// The bytes of one fuzz input.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <span>
#include <string_view>

namespace atdp::fuzz {

// Takes numbers from the front, zeros once the bytes are used up.
class Input {
 public:
    Input(const std::uint8_t* bytes, std::size_t size) : rest_(bytes, size) {}

    template <class Number>
    Number take() {
        Number number{};
        const std::size_t bytes = std::min(sizeof(number), rest_.size());
        if (bytes > 0) std::memcpy(&number, rest_.data(), bytes);
        rest_ = rest_.subspan(bytes);
        return number;
    }

    bool isEmpty() const { return rest_.empty(); }
    std::span<const std::uint8_t> rest() const { return rest_; }

    std::string_view text() const {
        return {reinterpret_cast<const char*>(rest_.data()), rest_.size()};
    }

 private:
    std::span<const std::uint8_t> rest_;
};

}  // namespace atdp::fuzz
