#include "host/sound_device.h"

#include <algorithm>
#include <cerrno>
#include <string>

#include "host/stop_signal.h"

namespace atdp::host {
namespace {

constexpr snd_pcm_format_t kSampleFormat = SND_PCM_FORMAT_FLOAT;
constexpr snd_pcm_access_t kAccess = SND_PCM_ACCESS_RW_INTERLEAVED;
constexpr int kNoResampling = 0;
constexpr unsigned kBufferMicroseconds = 500'000;

// ALSA's own messages would stand beside our one line.
void ignoreMessage(const char*, int, const char*, int, const char*, ...) {}

[[noreturn]] void fail(const std::string& what, int status) {
    throw SoundDeviceFailure("the sound device", what + ": " + snd_strerror(status));
}

}  // namespace

snd_pcm_t* SoundDevice::device() {
    if (device_) return device_.get();
    snd_lib_error_set_handler(ignoreMessage);
    snd_pcm_t* device = nullptr;
    const int status = snd_pcm_open(&device, "default", SND_PCM_STREAM_PLAYBACK, 0);
    if (status < 0) fail("cannot be opened", status);
    device_.reset(device);
    return device;
}

std::optional<SoundFormat> SoundDevice::nearest(SoundFormat wanted) {
    snd_pcm_t* const pcm = device();
    snd_pcm_hw_params_t* space = nullptr;  // what is still possible after each call
    snd_pcm_hw_params_alloca(&space);
    if (snd_pcm_hw_params_any(pcm, space) < 0 ||
        snd_pcm_hw_params_set_rate_resample(pcm, space, kNoResampling) < 0 ||
        snd_pcm_hw_params_set_access(pcm, space, kAccess) < 0 ||
        snd_pcm_hw_params_set_format(pcm, space, kSampleFormat) < 0 ||
        snd_pcm_hw_params_set_channels_near(pcm, space, &wanted.channels) < 0 ||
        snd_pcm_hw_params_set_rate_near(pcm, space, &wanted.rate, nullptr) < 0) {
        return std::nullopt;
    }
    return wanted;
}

bool SoundDevice::prepare(SoundFormat format) {
    if (format_ == format) return true;
    drain();
    const int status = snd_pcm_set_params(device(), kSampleFormat, kAccess, format.channels,
                                          format.rate, kNoResampling, kBufferMicroseconds);
    format_ = status < 0 ? std::nullopt : std::optional(format);
    return format_.has_value();
}

void SoundDevice::play(std::span<const float> samples) {
    const std::size_t channels = format_->channels;
    while (!samples.empty()) {
        checkForStop();
        const snd_pcm_sframes_t frames =
            snd_pcm_writei(device_.get(), samples.data(), samples.size() / channels);
        if (frames >= 0) {
            samples = samples.subspan(static_cast<std::size_t>(frames) * channels);
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
    if (!format_) return;
    int status = -EINTR;
    while (status == -EINTR) {
        checkForStop();
        status = snd_pcm_drain(device_.get());
    }
    if (status < 0) fail("stopped", status);
}

}  // namespace atdp::host
