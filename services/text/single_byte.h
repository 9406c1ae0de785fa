// Encodings of one byte a character that give every byte a character, to UTF-8.
#pragma once

#include <string>
#include <string_view>

namespace atdp::services {

std::string fromLatin1(std::string_view bytes);
std::string fromMacRoman(std::string_view bytes);

// Windows-1252 leaves five bytes undefined; they become the controls that ISO-8859-1 has there.
std::string fromWindows1252(std::string_view bytes);
bool isWindows1252(std::string_view bytes);

}  // namespace atdp::services
