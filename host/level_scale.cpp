#include "host/level_scale.h"

#include <algorithm>
#include <cmath>

namespace atdp::host {
namespace {

// The first suits 16-bit sound; each is a multiple of 4, for even labels.
constexpr double kFloorsDb[] = {-96, -144, -192};
constexpr double kBelowThresholdDb = 24;

}  // namespace

double levelOf(double decibels) {
    return std::pow(10.0, decibels / 20);
}

LevelScale::LevelScale(std::optional<double> thresholdDb) : floorDb_(kFloorsDb[0]) {
    for (const double floor : kFloorsDb) {
        floorDb_ = floor;
        if (thresholdDb.value_or(0) - kBelowThresholdDb >= floor) break;
    }
}

double LevelScale::height(double sample) const {
    const double decibels = 20 * std::log10(std::fabs(sample));  // -infinity for 0
    return std::copysign(std::clamp(1 - decibels / floorDb_, 0.0, 1.0), sample);
}

}  // namespace atdp::host
