#include "platform/string_encoding.h"

#include <algorithm>
#include <array>

#include "services/text/charset.h"
#include "services/text/japanese.h"
#include "services/text/non_lossy_ascii.h"
#include "services/text/single_byte.h"
#include "services/text/utf16.h"
#include "services/text/utf8.h"

namespace {

using namespace atdp::services;

constexpr std::array<NSStringEncoding, 12> kCandidates = {
    NSUTF8StringEncoding,          NSNonLossyASCIIStringEncoding, NSShiftJISStringEncoding,
    NSJapaneseEUCStringEncoding,   NSMacOSRomanStringEncoding,    NSWindowsCP1251StringEncoding,
    NSWindowsCP1252StringEncoding, NSWindowsCP1253StringEncoding, NSWindowsCP1254StringEncoding,
    NSWindowsCP1250StringEncoding, NSISOLatin1StringEncoding,     NSUnicodeStringEncoding};

std::optional<std::string> textIf(bool valid, std::string_view text) {
    return valid ? std::optional<std::string>(text) : std::nullopt;
}

}  // namespace

std::optional<std::string> stringWithBytes(std::span<const std::byte> bytes,
                                           NSStringEncoding encoding) {
    const std::string_view characters = charactersOf(bytes);
    switch (encoding) {
        case NSASCIIStringEncoding:
            return textIf(isAscii(characters), characters);
        case NSJapaneseEUCStringEncoding:
            return fromEucJp(characters);
        case NSUTF8StringEncoding:
            return textIf(isUtf8(characters), withoutUtf8Mark(characters));
        case NSISOLatin1StringEncoding:
            return fromLatin1(characters);
        case NSNonLossyASCIIStringEncoding:
            return fromNonLossyAscii(characters);
        case NSShiftJISStringEncoding:
            return fromShiftJis(characters);
        case NSUnicodeStringEncoding:
            return fromValidUtf16(bytes, utf16Order(bytes));
        case NSWindowsCP1251StringEncoding:
            return fromCharset(characters, "CP1251");
        case NSWindowsCP1252StringEncoding:
            return isWindows1252(characters) ? std::optional(fromWindows1252(characters))
                                             : std::nullopt;
        case NSWindowsCP1253StringEncoding:
            return fromCharset(characters, "CP1253");
        case NSWindowsCP1254StringEncoding:
            return fromCharset(characters, "CP1254");
        case NSWindowsCP1250StringEncoding:
            return fromCharset(characters, "CP1250");
        case NSISO2022JPStringEncoding:
            return fromIso2022Jp(characters);
        case NSMacOSRomanStringEncoding:
            return fromMacRoman(characters);
        case NSUTF16BigEndianStringEncoding:
            return fromValidUtf16(bytes, std::endian::big);
        default:
            return std::nullopt;
    }
}

NSStringEncoding estimateStringEncoding(std::span<const std::byte> bytes) {
    const auto accepts = [bytes](NSStringEncoding encoding) {
        return stringWithBytes(bytes, encoding).has_value();
    };
    constexpr std::byte kEscape{0x1B};
    const bool escaped = std::ranges::find(bytes, kEscape) != bytes.end();
    if (escaped && accepts(NSISO2022JPStringEncoding)) return NSISO2022JPStringEncoding;
    const auto candidate = std::ranges::find_if(kCandidates, accepts);
    return candidate != kCandidates.end() ? *candidate : NSASCIIStringEncoding;
}
