// Damaged copies of a file, for what must bear them all.
#pragma once

#include <cstdint>
#include <string>

#include "tests/support/byte_builder.h"

namespace atdp::test {

// Calls `test` with the file cut at every byte, from either end, and with other numbers in the
// place of every byte and of every four.
template <class Test>
void forEachDamage(const std::string& whole, const Test& test) {
    const auto replace = [&](std::size_t at, const std::string& bytes) {
        std::string changed = whole;
        changed.replace(at, bytes.size(), bytes);
        changed.resize(whole.size());
        test(changed);
    };
    for (std::size_t at = 0; at < whole.size(); ++at) {
        test(whole.substr(0, at));
        test(whole.substr(at));
        for (const char value : {'\0', '\x7F', '\x80', '\xFF'}) replace(at, std::string(1, value));
        for (const std::uint32_t value : {0U, 1U, 7U, 8U, 0x7FFFFFFFU, 0xFFFFFFFFU})
            replace(at, bigEndian(value));
    }
}

}  // namespace atdp::test
