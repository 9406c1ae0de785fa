// UTF-8, the form of all text in here.
#pragma once

#include <string>
#include <string_view>

#include "services/io/byte_cursor.h"

namespace atdp::services {

inline std::string_view charactersOf(Bytes bytes) {
    return {reinterpret_cast<const char*>(bytes.data()), bytes.size()};
}

constexpr bool isSurrogate(char32_t character) {
    return character >= 0xD800 && character < 0xE000;
}

// Appends a character, which is neither a surrogate nor above U+10FFFF.
void appendUtf8(std::string& text, char32_t character);

bool isAscii(std::string_view bytes);

// Whether the bytes are UTF-8: no character longer than it needs to be, no surrogate, nothing above
// U+10FFFF.
bool isUtf8(std::string_view bytes);

// The bytes behind the byte order mark that some writers put before UTF-8.
std::string_view withoutUtf8Mark(std::string_view bytes);

}  // namespace atdp::services
