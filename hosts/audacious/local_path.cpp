#include "hosts/audacious/local_path.h"

#include <libaudcore/audstrings.h>

#include <string_view>

namespace atdp::audacious {

std::optional<std::string> localPath(const char* uri) {
    if (!std::string_view(uri).starts_with("file://")) return std::nullopt;
    StringBuf path = uri_to_filename(uri);
    if (!path) return std::nullopt;
    return std::string(static_cast<const char*>(path));
}

}  // namespace atdp::audacious
