// Which of the player's songs are files on this machine.
#pragma once

#include <optional>
#include <string>

namespace atdp::audacious {

// The path of a file:// URI, in bytes; nothing for songs from elsewhere.
std::optional<std::string> localPath(const char* uri);

}  // namespace atdp::audacious
