#include "services/text/single_byte.h"

#include "services/text/utf8.h"

namespace atdp::services {
namespace {

// From 0x80 to 0x9F; the rest is as in ISO-8859-1.
constexpr std::u16string_view kWindows1252 =
    u"€\x81‚ƒ„…†‡ˆ‰Š‹Œ\x8DŽ\x8F"
    u"\x90‘’“”•–—˜™š›œ\x9DžŸ";
constexpr std::string_view kUndefinedInWindows1252 = "\x81\x8D\x8F\x90\x9D";

// From 0x80 to 0xFF. 0xF0 is the maker's sign, for which Unicode has private use only. The C
// library differs here and in 0xC6.
constexpr std::u16string_view kMacRoman =
    u"ÄÅÇÉÑÖÜáàâäãåçéèêëíìîïñóòôöõúùûü"
    u"†°¢£§•¶ß®©™´¨≠ÆØ∞±≤≥¥µ∂∑∏π∫ªºΩæø"
    u"¿¡¬√ƒ≈∆«»…\u00A0ÀÃÕŒœ–—“”‘’÷◊ÿŸ⁄€‹›ﬁﬂ"
    u"‡·‚„‰ÂÊÁËÈÍÎÏÌÓÔ\uF8FFÒÚÛÙıˆ˜¯˘˙˚¸˝˛ˇ";

static_assert(kWindows1252.size() == 0x20 && kMacRoman.size() == 0x80);

// `fromHex80` holds the characters from 0x80 up; a byte without one there is its own number.
std::string fromSingleBytes(std::string_view bytes, std::u16string_view fromHex80) {
    std::string text;
    for (const char character : bytes) {
        const auto byte = static_cast<unsigned char>(character);
        const bool listed = byte >= 0x80 && byte - 0x80U < fromHex80.size();
        appendUtf8(text, listed ? fromHex80[byte - 0x80U] : byte);
    }
    return text;
}

}  // namespace

std::string fromLatin1(std::string_view bytes) {
    return fromSingleBytes(bytes, {});
}

std::string fromMacRoman(std::string_view bytes) {
    return fromSingleBytes(bytes, kMacRoman);
}

std::string fromWindows1252(std::string_view bytes) {
    return fromSingleBytes(bytes, kWindows1252);
}

bool isWindows1252(std::string_view bytes) {
    return bytes.find_first_of(kUndefinedInWindows1252) == std::string_view::npos;
}

}  // namespace atdp::services
