#include "host/edge_lane.h"

namespace atdp::host {
namespace {

constexpr double kMostPaddingSeconds = 1;

}  // namespace

LanePainter::LanePainter(const EdgeMeasurement& edges)
    : edges_(edges), length_(seconds(edges.envelope.frames())), scale_(edges.thresholdDb) {
    const double start = seconds(edges.start.silentFrames);
    const double end = length_ - seconds(edges.end.silentFrames);
    cuts_ = {
        {"silent", 0, start, start},
        {"silent", end, length_, end},
        {"counted", -paddingSeconds(edges.start), 0, 0},
        {"counted", length_, length_ + paddingSeconds(edges.end), length_},
    };
}

double LanePainter::seconds(std::uint64_t frames) const {
    return static_cast<double>(frames) / double{edges_.rate};
}

double LanePainter::paddingSeconds(const EdgeCut& cut) const {
    return std::min(seconds(cut.countedFrames), kMostPaddingSeconds);
}

void LanePainter::draw(SvgText& svg, const TimeView& view, const LaneBox& box,
                       std::uint32_t channel) const {
    drawGround(svg, view, box);
    drawWaveform(svg, view, box, channel);
    drawCuts(svg, view, box);
    drawThreshold(svg, view, box);
    svg.rectangle("frame", {view.left, box.top}, {view.right(), box.bottom});
}

void LanePainter::drawGround(SvgText& svg, const TimeView& view, const LaneBox& box) const {
    svg.rectangle("lane", {view.left, box.top}, {view.right(), box.bottom});
    svg.rectangle("sound", {view.x(0), box.top}, {view.x(length_), box.bottom});
    for (int step = -3; step <= 3; ++step) {
        const double y = box.y(step / 4.0);
        svg.line("grid", {view.left, y}, {view.right(), y});
    }
}

// Every step spans the middle line, as sound does that crosses zero a little earlier or later.
void LanePainter::drawWaveform(SvgText& svg, const TimeView& view, const LaneBox& box,
                               std::uint32_t channel) const {
    const double halfStep = seconds(edges_.envelope.stepFrames()) / 2;
    std::vector<SvgPoint> outline;
    std::vector<SvgPoint> lowerSide;
    for (const EnvelopeStep& step : view.steps) {
        const SampleRange& range = step.channels[channel];
        const double x = view.x(seconds(step.firstFrame) + halfStep);
        outline.push_back({x, box.y(scale_.height(std::max(range.highest, 0.0F)))});
        lowerSide.push_back({x, box.y(scale_.height(std::min(range.lowest, 0.0F)))});
    }
    outline.insert(outline.end(), lowerSide.rbegin(), lowerSide.rend());
    svg.polygon("waveform", outline);
}

void LanePainter::drawCuts(SvgText& svg, const TimeView& view, const LaneBox& box) const {
    for (const CutStretch& cut : cuts_) {
        const double left = view.x(cut.from);
        const double right = view.x(cut.to);
        if (left == right) continue;
        svg.rectangle(cut.styleClass, {left, box.top}, {right, box.bottom});
        if (!view.shows(cut.border)) continue;
        const double x = view.x(cut.border);
        svg.line(cut.styleClass + "-border", {x, box.top}, {x, box.bottom});
    }
}

void LanePainter::drawThreshold(SvgText& svg, const TimeView& view, const LaneBox& box) const {
    if (!edges_.thresholdDb) return;
    const double height = scale_.height(levelOf(*edges_.thresholdDb));
    for (const double y : {box.y(height), box.y(-height)}) {
        svg.line("threshold", {view.x(0), y}, {view.x(length_), y});
    }
}

}  // namespace atdp::host
