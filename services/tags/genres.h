#pragma once

#include <string>

namespace atdp::services {

// The name of a genre that tags give by number, empty where there is none of that number.
std::string genreOfNumber(int number);

}  // namespace atdp::services
