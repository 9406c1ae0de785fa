#include "services/tags/text.h"

#include <algorithm>

#include "services/text/single_byte.h"
#include "services/text/utf8.h"

namespace atdp::services {

std::string fromUtf8OrWindows1252(std::string_view bytes) {
    bytes = withoutUtf8Mark(bytes);
    return isUtf8(bytes) ? std::string(bytes) : fromWindows1252(bytes);
}

std::string joinedValues(std::string_view values) {
    std::string joined;
    while (!values.empty()) {
        const std::string_view value = values.substr(0, values.find('\0'));
        if (!value.empty()) joined += (joined.empty() ? "" : "; ") + std::string(value);
        values.remove_prefix(std::min(value.size() + 1, values.size()));
    }
    return joined;
}

std::string yearOf(const std::string& date) {
    constexpr std::size_t kDigits = 4;
    const bool isDate = date.size() > kDigits && date.find_first_not_of("0123456789") == kDigits;
    return isDate ? date.substr(0, kDigits) : date;
}

}  // namespace atdp::services
