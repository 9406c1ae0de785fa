#pragma once

#include <memory>
#include <string>

#include "services/io/byte_source.h"

namespace atdp::services {

// Opens a regular file for positioned reads. A memory map would be quicker to write, but a file
// that shrinks or a disk that fails while it plays would then end the player with a signal.
Result<std::shared_ptr<ByteSource>> openFileSource(const std::string& path);

}  // namespace atdp::services
