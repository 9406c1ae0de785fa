#include "host/number_text.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstdio>

namespace atdp::host {

std::string plainNumber(float value) {
    char text[64];  // the longest float takes 48 characters
    const auto end =
        std::to_chars(std::begin(text), std::end(text), value, std::chars_format::fixed).ptr;
    return {text, end};
}

std::optional<double> finiteNumber(const std::string& text) {
    double number = 0;
    const char* const end = text.data() + text.size();
    const auto parsed = std::from_chars(text.data(), end, number);
    const bool isNumber = parsed.ptr == end && parsed.ec == std::errc();
    return isNumber && std::isfinite(number) ? std::optional(number) : std::nullopt;
}

std::string clockText(double seconds) {
    const auto whole = static_cast<long long>(std::clamp(seconds, 0.0, 1e15));
    char text[64];
    if (whole >= 3600) {
        std::snprintf(text, sizeof text, "%lld:%02lld:%02lld", whole / 3600, whole / 60 % 60,
                      whole % 60);
    } else {
        std::snprintf(text, sizeof text, "%lld:%02lld", whole / 60, whole % 60);
    }
    return text;
}

}  // namespace atdp::host
