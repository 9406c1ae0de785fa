#include "host/sound_device.h"

#include <algorithm>
#include <cerrno>
#include <string>

#include "host/stop_signal.h"

namespace atdp::host {
namespace {

constexpr unsigned kBufferMicroseconds = 500'000;

// ALSA's own messages would stand beside our one line.
void ignoreMessage(const char*, int, const char*, int, const char*, ...) {}

[[noreturn]] void fail(const std::string& what, int status) {
    throw SoundDeviceFailure("the sound device", what + ": " + snd_strerror(status));
}

}  // namespace

void SoundDevice::open() {
    snd_lib_error_set_handler(ignoreMessage);
    snd_pcm_t* device = nullptr;
    const int status = snd_pcm_open(&device, "default", SND_PCM_STREAM_PLAYBACK, 0);
    if (status < 0) fail("cannot be opened", status);
    device_.reset(device);
}

bool SoundDevice::prepare(std::uint32_t rate, std::uint32_t channels) {
    if (prepared_ && rate_ == rate && channels_ == channels) return true;
    if (!device_) open();
    drain();
    const int noResampling = 0;
    const int status =
        snd_pcm_set_params(device_.get(), SND_PCM_FORMAT_FLOAT, SND_PCM_ACCESS_RW_INTERLEAVED,
                           channels, rate, noResampling, kBufferMicroseconds);
    prepared_ = status >= 0;
    rate_ = rate;
    channels_ = channels;
    return prepared_;
}

void SoundDevice::play(std::span<const float> samples) {
    while (!samples.empty()) {
        checkForStop();
        const snd_pcm_sframes_t frames =
            snd_pcm_writei(device_.get(), samples.data(), samples.size() / channels_);
        if (frames >= 0) {
            samples = samples.subspan(static_cast<std::size_t>(frames) * channels_);
            continue;
        }
        // Sound came too late (an underrun), or the computer slept.
        const int status = snd_pcm_recover(device_.get(), static_cast<int>(frames), 1);
        if (status < 0) fail("stopped", status);
    }
}

std::uint64_t SoundDevice::framesWaiting() {
    snd_pcm_sframes_t frames = 0;
    if (snd_pcm_delay(device_.get(), &frames) < 0) return 0;
    return static_cast<std::uint64_t>(std::max<snd_pcm_sframes_t>(frames, 0));
}

void SoundDevice::drain() {
    if (!prepared_) return;
    int status = -EINTR;
    while (status == -EINTR) {
        checkForStop();
        status = snd_pcm_drain(device_.get());
    }
    if (status < 0) fail("stopped", status);
}

}  // namespace atdp::host
