#include "host/edge_measurement.h"

#include <algorithm>
#include <cstdio>

#include "host/frame_reader.h"
#include "host/opened_file.h"
#include "host/progress_bar.h"
#include "host/stop_signal.h"

namespace atdp::host {
namespace {

constexpr std::uint32_t kMostOutlinedChannels = 16;

std::uint64_t atLeastZero(std::int32_t frames) {
    return frames > 0 ? static_cast<std::uint64_t>(frames) : 0;
}

std::uint64_t difference(std::uint64_t more, std::uint64_t fewer) {
    return more > fewer ? more - fewer : 0;
}

// Of a count of delay at most a second is cut; a negative one cuts the whole second.
std::uint64_t framesCutByCount(std::int32_t frames, float rate) {
    const auto second = static_cast<std::uint64_t>(rate);
    return frames < 0 ? second
                      : std::min<std::uint64_t>(static_cast<std::uint32_t>(frames), second);
}

EdgeMeasurement emptyMeasurement(const OpenedFile& file, const FrameReader& reader,
                                 std::optional<double> thresholdDb) {
    return {
        .path = file.path,
        .rate = reader.rate(),
        .channels = reader.channels(),
        .thresholdDb = thresholdDb,
        .start = {framesCutByCount(file.decoder->getPrimingFrames(), reader.rate()), 0},
        .end = {atLeastZero(file.decoder->getRemainderFrames()), 0},
        .envelope = EdgeEnvelope(reader.rate(), std::min(reader.channels(), kMostOutlinedChannels)),
    };
}

// What a decode with the threshold delivers less than the one before. What is cut at the start is
// among the priming frames; at the end, only the missing frames tell.
void measureSilence(PluginModule& module, EdgeMeasurement& edges, ProgressBar& progress) {
    const std::uint64_t allFrames = edges.envelope.frames();
    OpenedFile file = openFile(module, edges.path, edges.thresholdDb);
    FrameReader reader(file, module.log());
    std::uint64_t frames = 0;
    for (auto samples = reader.next(); !samples.empty(); samples = reader.next()) {
        checkForStop();
        frames += samples.size() / reader.channels();
        progress.update(allFrames + frames);
    }
    const std::uint64_t cutFrames = difference(allFrames, frames);
    const std::uint64_t primingFrames = atLeastZero(file.decoder->getPrimingFrames());
    edges.start.silentFrames =
        std::min(difference(primingFrames, edges.start.countedFrames), cutFrames);
    edges.end.silentFrames = cutFrames - edges.start.silentFrames;
}

std::string framesText(std::uint64_t frames, float rate) {
    char milliseconds[64];
    std::snprintf(milliseconds, sizeof milliseconds, " frames (%.2f ms)",
                  static_cast<double>(frames) * 1000 / double{rate});
    return std::to_string(frames) + milliseconds;
}

}  // namespace

EdgeMeasurement measureEdges(PluginModule& module, const std::string& path,
                             std::optional<double> thresholdDb) {
    if (thresholdDb == 0.0) thresholdDb.reset();
    OpenedFile file = openFile(module, path);
    FrameReader reader(file, module.log());
    EdgeMeasurement edges = emptyMeasurement(file, reader, thresholdDb);
    ProgressBar progress(reader.fileFrames() * (thresholdDb ? 2 : 1));
    for (auto samples = reader.next(); !samples.empty(); samples = reader.next()) {
        checkForStop();
        edges.envelope.add(samples, reader.channels());
        progress.update(edges.envelope.frames());
    }
    if (thresholdDb) measureSilence(module, edges, progress);
    return edges;
}

std::string edgeCutText(const EdgeCut& cut, float rate) {
    return "cut by counts " + framesText(cut.countedFrames, rate) + ", by threshold " +
           framesText(cut.silentFrames, rate);
}

}  // namespace atdp::host
