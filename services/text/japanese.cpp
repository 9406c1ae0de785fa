#include "services/text/japanese.h"

#include <algorithm>

#include "services/text/charset.h"

namespace atdp::services {

std::optional<std::string> fromShiftJis(std::string_view bytes) {
    return fromCharset(bytes, "CP932");
}

std::optional<std::string> fromEucJp(std::string_view bytes) {
    const auto isControl = [](char character) {
        const auto byte = static_cast<unsigned char>(character);
        return byte >= 0x80 && byte < 0xA0 && byte != 0x8E && byte != 0x8F;
    };
    if (std::ranges::any_of(bytes, isControl)) return std::nullopt;
    return fromCharset(bytes, "EUC-JP");
}

std::optional<std::string> fromIso2022Jp(std::string_view bytes) {
    // The second version adds, among others, the half-width katakana that writers use with the
    // first. The C library passes an unknown escape on as text.
    std::optional<std::string> text = fromCharset(bytes, "ISO-2022-JP-2");
    if (text && text->find('\x1B') != std::string::npos) text.reset();
    return text;
}

}  // namespace atdp::services
