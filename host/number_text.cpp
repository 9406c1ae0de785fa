#include "host/number_text.h"

#include <algorithm>
#include <charconv>
#include <cstdio>

namespace atdp::host {

std::string plainNumber(float value) {
    char text[64];  // the longest float takes 48 characters
    const auto end =
        std::to_chars(std::begin(text), std::end(text), value, std::chars_format::fixed).ptr;
    return {text, end};
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
