// What the platform makes of bytes as text.
#pragma once

#include <span>
#include <string>

#include "platform/string_encoding.h"

namespace atdp::test {

inline std::string text(const std::string& bytes, NSStringEncoding encoding) {
    return stringWithBytes(std::as_bytes(std::span(bytes)), encoding).value_or("(refused)");
}

inline NSStringEncoding guess(const std::string& bytes) {
    return estimateStringEncoding(std::as_bytes(std::span(bytes)));
}

// Every byte that is no text by itself.
inline std::string bytesRefused(NSStringEncoding encoding) {
    std::string refused;
    for (int byte = 0; byte < 256; ++byte) {
        const std::string bytes(1, static_cast<char>(byte));
        if (text(bytes, encoding) == "(refused)") refused += bytes;
    }
    return refused;
}

inline std::string bytesFromTo(int first, int last) {
    std::string bytes;
    for (int byte = first; byte <= last; ++byte) bytes += static_cast<char>(byte);
    return bytes;
}

inline constexpr NSStringEncoding kEncodings[] = {
    NSASCIIStringEncoding,         NSJapaneseEUCStringEncoding,   NSUTF8StringEncoding,
    NSISOLatin1StringEncoding,     NSNonLossyASCIIStringEncoding, NSShiftJISStringEncoding,
    NSUnicodeStringEncoding,       NSWindowsCP1251StringEncoding, NSWindowsCP1252StringEncoding,
    NSWindowsCP1253StringEncoding, NSWindowsCP1254StringEncoding, NSWindowsCP1250StringEncoding,
    NSISO2022JPStringEncoding,     NSMacOSRomanStringEncoding,    NSUTF16BigEndianStringEncoding};

}  // namespace atdp::test
