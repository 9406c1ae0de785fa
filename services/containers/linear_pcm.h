// The one place where what a header says of linear PCM, or of what is not decoded, is checked.
#pragma once

#include <cstdint>

#include "services/containers/sound_description.h"

namespace atdp::services {

// Layout of linear PCM as a header states it.
struct LinearPcm {
    double rate = 0;  // Hz
    std::uint32_t channels = 0;
    std::uint32_t bitsPerChannel = 0;
    std::uint32_t bytesPerSample = 0;  // of the container that a sample is stored in
    bool isFloat = false;
    bool isSigned = true;
    bool isBigEndian = false;
};

// True when a rate and a channel count are within the bounds of limits.h.
bool isPlausible(double rate, std::uint32_t channels);

// The description of `data` as linear PCM. Samples narrower than their container are aligned to
// its high end. A frame that `data` cuts short is dropped. kDamaged where the numbers contradict
// each other or are out of bounds.
Result<SoundDescription> describeLinearPcm(std::uint32_t fileType, const LinearPcm& pcm,
                                           ByteRange data);

// The description of an encoding that this system names but does not decode. kDamaged where the
// rate or the channel count is out of bounds.
Result<SoundDescription> describeUndecoded(std::uint32_t fileType, std::uint32_t formatID,
                                           double rate, std::uint32_t channels, ByteRange data);

}  // namespace atdp::services
