// What is cut from the ends of a file.
#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "host/edge_envelope.h"
#include "host/plugin_module.h"

namespace atdp::host {

// Frames cut at one end.
struct EdgeCut {
    std::uint64_t countedFrames;  // padding that the file tells of; never delivered
    std::uint64_t silentFrames;   // delivered unless there is a threshold
};

struct EdgeMeasurement {
    std::string path;
    float rate;                         // Hz
    std::uint32_t channels;             // of the file; the envelope may have fewer
    std::optional<double> thresholdDb;  // nothing when it is off
    EdgeCut start;
    EdgeCut end;
    EdgeEnvelope envelope;  // of what is delivered without a threshold
};

// Decodes the whole file, twice when there is a threshold. Throws Failure, and Interrupted.
EdgeMeasurement measureEdges(PluginModule& module, const std::string& path,
                             std::optional<double> thresholdDb);

// "cut by counts 1105 frames (25.06 ms), by threshold 0 frames (0.00 ms)"
std::string edgeCutText(const EdgeCut& cut, float rate);

}  // namespace atdp::host
