#include "bench/mpg123_player.h"

#include <mpg123.h>

#include <algorithm>
#include <cstring>

namespace atdp::bench {
namespace {

class Mpg123Player final : public Player {
 public:
    Mpg123Player(const std::string& path, bool scans) : handle_(mpg123_new(nullptr, nullptr)) {
        mpg123_param(handle_, MPG123_ADD_FLAGS, MPG123_FORCE_FLOAT | MPG123_QUIET, 0);
        mpg123_param(handle_, MPG123_REMOVE_FLAGS, MPG123_AUTO_RESAMPLE, 0);
        require(mpg123_open(handle_, path.c_str()) == MPG123_OK, "libmpg123 does not open a file");
        require(!scans || mpg123_scan(handle_) == MPG123_OK, "libmpg123 does not scan a file");
        long rate = 0;
        int encoding = 0;
        require(mpg123_getformat(handle_, &rate, &channels_, &encoding) == MPG123_OK,
                "libmpg123 finds no format");
    }
    ~Mpg123Player() override { mpg123_delete(handle_); }

    // A packet at a time, which is its fastest way.
    std::size_t read(float* samples, std::size_t frames) override {
        const auto channels = static_cast<std::size_t>(channels_);
        std::size_t done = 0;
        while (done < frames && (held_ > 0 || decode())) {
            const std::size_t count = std::min(held_, frames - done);
            std::memcpy(samples + done * channels, next_, count * channels * sizeof(float));
            next_ += count * channels;
            held_ -= count;
            done += count;
        }
        return done;
    }

    void seek(std::uint64_t frame) override {
        held_ = 0;
        require(
            mpg123_seek(handle_, static_cast<off_t>(frame), SEEK_SET) == static_cast<off_t>(frame),
            "a seek fails");
    }

 private:
    bool decode() {
        off_t number = 0;
        unsigned char* samples = nullptr;
        std::size_t bytes = 0;
        int status = MPG123_NEW_FORMAT;
        while (status == MPG123_NEW_FORMAT)
            status = mpg123_decode_frame(handle_, &number, &samples, &bytes);
        if (status == MPG123_DONE) return false;
        require(status == MPG123_OK, "libmpg123 does not decode");
        next_ = reinterpret_cast<const float*>(samples);
        held_ = bytes / sizeof(float) / static_cast<std::size_t>(channels_);
        return true;
    }

    mpg123_handle* handle_;
    int channels_ = 0;
    const float* next_ = nullptr;  // what was decoded and not yet read
    std::size_t held_ = 0;         // frames of it
};

}  // namespace

std::unique_ptr<Player> openWithMpg123(const std::string& path) {
    return std::make_unique<Mpg123Player>(path, false);
}

std::unique_ptr<Player> openAndScanWithMpg123(const std::string& path) {
    return std::make_unique<Mpg123Player>(path, true);
}

}  // namespace atdp::bench
