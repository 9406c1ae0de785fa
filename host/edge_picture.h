// A picture of the ends of a file and of what is cut from them.
#pragma once

#include <string>

#include "host/edge_measurement.h"

namespace atdp::host {

// An SVG document: the first and the last second side by side, one lane a channel. Levels are
// drawn in decibels, since at a linear scale nothing of what a threshold cuts would be seen.
std::string edgePicture(const EdgeMeasurement& edges);

}  // namespace atdp::host
