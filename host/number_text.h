// Numbers and times as people write them.
#pragma once

#include <string>

namespace atdp::host {

// The shortest text that names this number: 44100, not 44100.0; 0.1, not 0.100000001490116.
std::string plainNumber(float value);

// A length of time as 3:07 or 1:02:03.
std::string clockText(double seconds);

}  // namespace atdp::host
