#include "host/sound_names.h"

#include <algorithm>

namespace atdp::host {

bool SoundNames::contains(std::string_view path) const {
    const std::string extension = lowerCase(extensionOf(path));
    return !extension.empty() &&
           std::ranges::find(extensions_, extension.substr(1)) != extensions_.end();
}

std::string_view extensionOf(std::string_view path) {
    const std::string_view name = path.substr(path.rfind('/') + 1);
    const std::size_t dot = name.rfind('.');
    return dot == 0 || dot == std::string_view::npos ? std::string_view() : name.substr(dot);
}

std::string lowerCase(std::string_view text) {
    std::string lower(text);
    for (char& character : lower) {
        if (character >= 'A' && character <= 'Z') character += 'a' - 'A';
    }
    return lower;
}

}  // namespace atdp::host
