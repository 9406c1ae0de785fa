// Numbers and times as people write them.
#pragma once

#include <optional>
#include <string>

namespace atdp::host {

// The shortest text that names this number: 44100, not 44100.0; 0.1, not 0.100000001490116.
std::string plainNumber(float value);

// The number that the whole text is, such as -60 or 0.5; nothing when it is none or not finite.
std::optional<double> finiteNumber(const std::string& text);

// A length of time as 3:07 or 1:02:03.
std::string clockText(double seconds);

}  // namespace atdp::host
