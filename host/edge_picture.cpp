#include "host/edge_picture.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <string_view>

#include "host/edge_lane.h"
#include "host/number_text.h"
#include "host/svg_text.h"

namespace atdp::host {
namespace {

constexpr double kWidth = 1200;
constexpr double kLeft = 64;
constexpr double kRight = 1184;
constexpr double kViewGap = 36;
constexpr double kTop = 124;
constexpr double kBottomHeight = 88;  // time axes and legend
constexpr double kMostLaneHeight = 220;
constexpr double kMostLanesHeight = 8 * kMostLaneHeight;
constexpr double kLaneGap = 14;
constexpr double kLeastLabelDistance = 11;

constexpr std::string_view kStyleSheet =
    "text{font-family:sans-serif;font-size:12px;fill:#495057}"
    ".background{fill:#fff}"
    ".title{font-size:20px;font-weight:bold;fill:#212529}"
    ".heading{font-size:14px;font-weight:bold;fill:#212529}"
    ".level{font-size:10px;text-anchor:end}"
    ".time{text-anchor:middle}"
    ".channel{text-anchor:middle}"
    ".lane{fill:#f1f3f5}"
    ".frame{fill:none;stroke:#ced4da}"
    ".sound{fill:#fff}"
    ".grid{stroke:#e9ecef}"
    ".axis{stroke:#868e96}"
    ".waveform{fill:#74b4ec;stroke:#4a98de;stroke-linejoin:round}"
    ".threshold{stroke:#d9480f;stroke-width:1.5;stroke-dasharray:6 4}"
    ".silent{fill:#f76707;fill-opacity:0.22}"
    ".silent-border{stroke:#d9480f;stroke-width:1.5}"
    ".counted{fill:url(#hatch)}"
    ".counted-border{stroke:#343a40;stroke-width:1.5}";

constexpr std::string_view kHatch =
    "<pattern id=\"hatch\" width=\"6\" height=\"6\" patternUnits=\"userSpaceOnUse\" "
    "patternTransform=\"rotate(45)\"><rect width=\"6\" height=\"6\" fill=\"#f1f3f5\"/>"
    "<rect width=\"2\" height=\"6\" fill=\"#868e96\"/></pattern>";

class Drawing {
 public:
    explicit Drawing(const EdgeMeasurement& edges);
    std::string draw();

 private:
    LaneBox lane(std::uint32_t channel) const;
    void drawTitle();
    void drawView(const TimeView& view, const std::string& heading, const EdgeCut& cut);
    void drawLevelLabels(std::uint32_t channel);
    void drawTimeAxis(const TimeView& view, const std::string& name);
    void drawLegend();

    const EdgeMeasurement& edges_;
    LanePainter painter_;
    double laneHeight_;  // with the gap below
    double lanesBottom_;
    SvgText svg_;
};

double laneHeightFor(std::uint32_t channels) {
    return std::min(kMostLaneHeight, kMostLanesHeight / channels);
}

Drawing::Drawing(const EdgeMeasurement& edges)
    : edges_(edges),
      painter_(edges),
      laneHeight_(laneHeightFor(edges.envelope.channels())),
      lanesBottom_(kTop + laneHeight_ * edges.envelope.channels() - kLaneGap),
      svg_(kWidth, lanesBottom_ + kBottomHeight, kStyleSheet) {}

LaneBox Drawing::lane(std::uint32_t channel) const {
    const double top = kTop + laneHeight_ * channel;
    return {top, top + laneHeight_ - kLaneGap};
}

std::string Drawing::draw() {
    const double length = painter_.length();
    const double before = painter_.paddingSeconds(edges_.start);
    const double after = painter_.paddingSeconds(edges_.end);
    const double pixelsASecond = (kRight - kLeft - kViewGap) / (before + 1 + 1 + after);
    const TimeView start{kLeft, pixelsASecond, -before, 1, 0, edges_.envelope.firstSecond()};
    const TimeView end{start.right() + kViewGap, pixelsASecond, length - 1,
                       length + after,           length,        edges_.envelope.lastSecond()};
    drawTitle();
    drawView(start, "Start", edges_.start);
    drawView(end, "End", edges_.end);
    drawTimeAxis(start, "seconds from the start");
    drawTimeAxis(end, "seconds from the end");
    for (std::uint32_t i = 0; i < edges_.envelope.channels(); ++i) drawLevelLabels(i);
    drawLegend();
    return svg_.finish();
}

void Drawing::drawTitle() {
    char length[64];
    std::snprintf(length, sizeof length, "%.3f s", painter_.length());
    std::string facts = plainNumber(edges_.rate) + " Hz, " + std::to_string(edges_.channels) +
                        (edges_.channels == 1 ? " channel, " : " channels, ") + length;
    const std::uint32_t shown = edges_.envelope.channels();
    if (shown < edges_.channels) facts += ", first " + std::to_string(shown) + " channels shown";
    svg_.definitions(kHatch);
    svg_.rectangle("background", {0, 0}, {kWidth, lanesBottom_ + kBottomHeight});
    svg_.text("title", {kLeft, 36}, std::filesystem::path(edges_.path).filename().string());
    svg_.text("facts", {kLeft, 58}, facts);
}

void Drawing::drawView(const TimeView& view, const std::string& heading, const EdgeCut& cut) {
    svg_.text("heading", {view.left, kTop - 30}, heading);
    svg_.text("facts", {view.left, kTop - 12}, edgeCutText(cut, edges_.rate));
    for (std::uint32_t i = 0; i < edges_.envelope.channels(); ++i) {
        painter_.draw(svg_, view, lane(i), i);
    }
}

void Drawing::drawLevelLabels(std::uint32_t channel) {
    const LaneBox lane = this->lane(channel);
    const bool everyStep = (lane.bottom - lane.top) / 8 >= kLeastLabelDistance;
    for (int step = -4; step <= 4; step += everyStep ? 1 : 2) {
        const int decibels =
            static_cast<int>(painter_.scale().floorDb() * (4 - std::abs(step)) / 4);
        svg_.text("level", {kLeft - 6, lane.y(step / 4.0) + 4}, std::to_string(decibels));
    }
    const std::string name = "channel " + std::to_string(channel + 1) + " (dB)";
    svg_.uprightText("channel", {24, lane.middle()}, name);
}

void Drawing::drawTimeAxis(const TimeView& view, const std::string& name) {
    constexpr double kTicksASecond = 10;
    constexpr double kRounding = 1e-6;
    const auto first = std::lround(std::ceil((view.from - view.zero) * kTicksASecond - kRounding));
    const auto last = std::lround(std::floor((view.to - view.zero) * kTicksASecond + kRounding));
    for (long tick = first; tick <= last; ++tick) {
        const double x = view.x(view.zero + static_cast<double>(tick) / kTicksASecond);
        const bool hasLabel = tick % 2 == 0;
        svg_.line("axis", {x, lanesBottom_}, {x, lanesBottom_ + (hasLabel ? 7 : 4)});
        if (!hasLabel) continue;
        char label[32];
        std::snprintf(label, sizeof label, "%.1f", static_cast<double>(tick) / kTicksASecond);
        svg_.text("time", {x, lanesBottom_ + 20}, label);
    }
    svg_.text("time", {(view.left + view.right()) / 2, lanesBottom_ + 38}, name);
}

void Drawing::drawLegend() {
    const double top = lanesBottom_ + 58;
    const double bottom = top + 14;
    double x = kLeft;
    const auto addBox = [&](const char* styleClass, const std::string& words, double width) {
        svg_.rectangle(styleClass, {x, top}, {x + 28, bottom});
        svg_.text("legend", {x + 36, bottom - 2}, words);
        x += width;
    };
    addBox("waveform", "waveform", 140);
    addBox("counted", "cut by counts", 170);
    if (!edges_.thresholdDb) return;
    addBox("silent", "cut by threshold", 185);
    svg_.line("threshold", {x, (top + bottom) / 2}, {x + 28, (top + bottom) / 2});
    svg_.text("legend", {x + 36, bottom - 2},
              "threshold: " + plainNumber(static_cast<float>(*edges_.thresholdDb)) + " dB");
}

}  // namespace

std::string edgePicture(const EdgeMeasurement& edges) {
    return Drawing(edges).draw();
}

}  // namespace atdp::host
