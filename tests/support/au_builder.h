#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "tests/support/byte_builder.h"

namespace atdp::test {

// An AU file; little-endian with the other mark.
struct AuBuilder {
    std::string mark = ".snd";
    std::uint32_t encoding = 3;
    std::uint32_t rate = 44100;
    std::uint32_t channels = 2;
    std::string annotation;
    std::string data;
    std::optional<std::uint32_t> statedBytes, statedOffset;

    std::string bytes() const {
        const auto number = [this](std::uint32_t value) {
            return mark == ".snd" ? bigEndian(value) : littleEndian(value);
        };
        const auto offset = static_cast<std::uint32_t>(24 + annotation.size());
        return mark + number(statedOffset.value_or(offset)) +
               number(statedBytes.value_or(static_cast<std::uint32_t>(data.size()))) +
               number(encoding) + number(rate) + number(channels) + annotation + data;
    }
};

}  // namespace atdp::test
