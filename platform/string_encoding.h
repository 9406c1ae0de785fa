// String encodings: bytes to UTF-8 text, and a guess at the encoding of bytes that do not tell.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string>

using NSStringEncoding = std::uint64_t;

inline constexpr NSStringEncoding NSASCIIStringEncoding = 1;
inline constexpr NSStringEncoding NSJapaneseEUCStringEncoding = 3;
inline constexpr NSStringEncoding NSUTF8StringEncoding = 4;
inline constexpr NSStringEncoding NSISOLatin1StringEncoding = 5;
inline constexpr NSStringEncoding NSNonLossyASCIIStringEncoding = 7;
inline constexpr NSStringEncoding NSShiftJISStringEncoding = 8;
inline constexpr NSStringEncoding NSUnicodeStringEncoding = 10;  // UTF-16, by its mark or native
inline constexpr NSStringEncoding NSWindowsCP1251StringEncoding = 11;
inline constexpr NSStringEncoding NSWindowsCP1252StringEncoding = 12;
inline constexpr NSStringEncoding NSWindowsCP1253StringEncoding = 13;
inline constexpr NSStringEncoding NSWindowsCP1254StringEncoding = 14;
inline constexpr NSStringEncoding NSWindowsCP1250StringEncoding = 15;
inline constexpr NSStringEncoding NSISO2022JPStringEncoding = 21;
inline constexpr NSStringEncoding NSMacOSRomanStringEncoding = 30;
inline constexpr NSStringEncoding NSUTF16BigEndianStringEncoding = 0x90000100;

// The text that the bytes are in that encoding, as UTF-8. An encoding accepts or refuses a run of
// bytes whole: none where one byte does not belong. A leading byte order mark is not part of the
// text. Any thread. May throw std::bad_alloc.
std::optional<std::string> stringWithBytes(std::span<const std::byte> bytes,
                                           NSStringEncoding encoding);

// Guesses the encoding: the first in a fixed order that accepts the bytes. ISO-2022-JP comes first
// where there is an escape byte; then UTF-8, non-lossy ASCII, Shift JIS, EUC-JP, Mac OS Roman,
// Windows-1251, 1252, 1253, 1254 and 1250, ISO 8859-1, UTF-16; ASCII where none does. Encodings
// that refuse most foreign bytes so come before those that accept almost anything.
NSStringEncoding estimateStringEncoding(std::span<const std::byte> bytes);
