// One channel of an edge picture.
#pragma once

#include <algorithm>
#include <cstdint>
#include <deque>
#include <string>
#include <vector>

#include "host/edge_measurement.h"
#include "host/level_scale.h"
#include "host/svg_text.h"

namespace atdp::host {

// Part of the file's time, from left to right. Time 0 is where delivery starts without a threshold.
struct TimeView {
    double left;
    double pixelsASecond;
    double from;
    double to;
    double zero;  // what the axis counts from
    const std::deque<EnvelopeStep>& steps;

    double x(double seconds) const {
        return left + (std::clamp(seconds, from, to) - from) * pixelsASecond;
    }
    double right() const { return x(to); }
    bool shows(double seconds) const { return seconds >= from && seconds <= to; }
};

struct LaneBox {
    double top;
    double bottom;

    double middle() const { return (top + bottom) / 2; }
    double y(double height) const { return middle() - height * (bottom - top) / 2; }  // of -1 to 1
};

class LanePainter {
 public:
    explicit LanePainter(const EdgeMeasurement& edges);

    double length() const { return length_; }  // of the file, in seconds
    const LevelScale& scale() const { return scale_; }

    // How long the padding is drawn, in seconds: true padding is drawn whole.
    double paddingSeconds(const EdgeCut& cut) const;

    void draw(SvgText& svg, const TimeView& view, const LaneBox& box, std::uint32_t channel) const;

 private:
    // A stretch of time that is cut; the border is the side where the sound is.
    struct CutStretch {
        std::string styleClass;
        double from;
        double to;
        double border;
    };

    double seconds(std::uint64_t frames) const;
    void drawGround(SvgText& svg, const TimeView& view, const LaneBox& box) const;
    void drawWaveform(SvgText& svg, const TimeView& view, const LaneBox& box,
                      std::uint32_t channel) const;
    void drawCuts(SvgText& svg, const TimeView& view, const LaneBox& box) const;
    void drawThreshold(SvgText& svg, const TimeView& view, const LaneBox& box) const;

    const EdgeMeasurement& edges_;
    double length_;
    LevelScale scale_;
    std::vector<CutStretch> cuts_;
};

}  // namespace atdp::host
