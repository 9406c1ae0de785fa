#pragma once

#include <functional>
#include <map>
#include <string>

namespace atdp::services {

// UTF-8 text under names.
using TextMap = std::map<std::string, std::string, std::less<>>;

}  // namespace atdp::services
