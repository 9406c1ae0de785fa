// The default sound device.
#pragma once

#include <alsa/asoundlib.h>

#include <cstdint>
#include <memory>
#include <optional>
#include <span>

#include "host/failure.h"

namespace atdp::host {

// The device is unusable: no file can be played, whatever it is.
struct SoundDeviceFailure : Failure {
    using Failure::Failure;
};

struct SoundFormat {
    std::uint32_t rate;  // Hz
    std::uint32_t channels;
    bool operator==(const SoundFormat&) const = default;
};

// Plays 32-bit floats. Calls throw SoundDeviceFailure. What has not been heard when the object goes
// is lost.
class SoundDevice {
 public:
    // The format nearest to this one that the device takes as it is; nothing when it takes none.
    // What is playing plays on.
    std::optional<SoundFormat> nearest(SoundFormat wanted);

    // Gets ready for sound of this format. Sound of the format that is playing already follows on
    // without a gap; before any other the device plays to the end what it has. False when the
    // device does not take such sound as it is.
    bool prepare(SoundFormat format);

    // Whole frames, interleaved. Waits until the device has taken them, or throws Interrupted.
    void play(std::span<const float> samples);

    // Frames that were taken but not heard yet.
    std::uint64_t framesWaiting();

    // Waits until everything has been heard, or throws Interrupted.
    void drain();

 private:
    snd_pcm_t* device();  // opened the first time

    struct Closer {
        void operator()(snd_pcm_t* device) const { snd_pcm_close(device); }
    };
    std::unique_ptr<snd_pcm_t, Closer> device_;
    std::optional<SoundFormat> format_;  // that the device is ready for
};

}  // namespace atdp::host
