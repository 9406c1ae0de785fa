// Sample values as heights, in decibels on both sides of a middle line.
#pragma once

#include <optional>

namespace atdp::host {

// What a number of decibels relative to full scale is as a sample value.
double levelOf(double decibels);

class LevelScale {
 public:
    // Reaches down to silence, and below the threshold.
    explicit LevelScale(std::optional<double> thresholdDb);

    // From -1 to 1: full scale, negative or positive, or more; 0 is the floor, or less.
    double height(double sample) const;

    double floorDb() const { return floorDb_; }

 private:
    double floorDb_;
};

}  // namespace atdp::host
