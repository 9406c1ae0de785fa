// The default sound device.
#pragma once

#include <alsa/asoundlib.h>

#include <cstdint>
#include <memory>
#include <span>

#include "host/failure.h"

namespace atdp::host {

// The device is unusable: no file can be played, whatever it is.
struct SoundDeviceFailure : Failure {
    using Failure::Failure;
};

// Plays 32-bit floats. Calls throw SoundDeviceFailure. What has not been heard when the object goes
// is lost.
class SoundDevice {
 public:
    // Gets ready for sound of this kind, opening the device the first time. Sound of the kind that
    // is playing already follows on without a gap; before any other the device plays to the end
    // what it has. False when the device does not take such sound as it is.
    bool prepare(std::uint32_t rate, std::uint32_t channels);

    // Whole frames, interleaved. Waits until the device has taken them, or throws Interrupted.
    void play(std::span<const float> samples);

    // Frames that were taken but not heard yet.
    std::uint64_t framesWaiting();

    // Waits until everything has been heard, or throws Interrupted.
    void drain();

 private:
    void open();

    struct Closer {
        void operator()(snd_pcm_t* device) const { snd_pcm_close(device); }
    };
    std::unique_ptr<snd_pcm_t, Closer> device_;
    bool prepared_ = false;
    std::uint32_t rate_ = 0;
    std::uint32_t channels_ = 0;
};

}  // namespace atdp::host
