#include "bench/sndfile_player.h"

#include <sndfile.h>

namespace atdp::bench {
namespace {

class SndfilePlayer final : public Player {
 public:
    explicit SndfilePlayer(const std::string& path)
        : file_(sf_open(path.c_str(), SFM_READ, &info_)) {
        require(file_ != nullptr, "libsndfile does not open a file");
    }
    ~SndfilePlayer() override { sf_close(file_); }

    std::size_t read(float* samples, std::size_t frames) override {
        return static_cast<std::size_t>(
            sf_readf_float(file_, samples, static_cast<sf_count_t>(frames)));
    }

    void seek(std::uint64_t frame) override {
        require(sf_seek(file_, static_cast<sf_count_t>(frame), SEEK_SET) >= 0, "a seek fails");
    }

 private:
    SF_INFO info_{};
    SNDFILE* file_;
};

}  // namespace

std::unique_ptr<Player> openWithSndfile(const std::string& path) {
    return std::make_unique<SndfilePlayer>(path);
}

}  // namespace atdp::bench
