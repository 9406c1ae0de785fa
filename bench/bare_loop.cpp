// Compiled for the instruction set that the decoders choose at run time.
#include "bench/bare_loop.h"

#include <fcntl.h>
#include <unistd.h>

#include <cstring>
#include <vector>

namespace atdp::bench {
namespace {

constexpr std::size_t kBlockBytes = 64 * 1024;

[[gnu::target("avx2")]] void convert(const std::uint16_t* in, float* out, std::size_t samples) {
    for (std::size_t i = 0; i < samples; ++i)
        out[i] = static_cast<float>(static_cast<std::int16_t>(in[i])) * 0x1p-15F;
}

[[gnu::target("avx2")]] void convertSwapped(const std::uint16_t* in, float* out,
                                            std::size_t samples) {
    for (std::size_t i = 0; i < samples; ++i)
        out[i] = static_cast<float>(static_cast<std::int16_t>(__builtin_bswap16(in[i]))) * 0x1p-15F;
}

class BareLoopPlayer final : public Player {
 public:
    BareLoopPlayer(const std::string& path, BareLoop loop)
        : file_(::open(path.c_str(), O_RDONLY | O_CLOEXEC)), loop_(loop), block_(kBlockBytes / 2) {
        require(file_ >= 0, "a file does not open");
    }
    ~BareLoopPlayer() override { ::close(file_); }

    std::size_t read(float* samples, std::size_t) override {
        const ssize_t bytes = ::read(file_, block_.data(), kBlockBytes);
        require(bytes >= 0, "a read fails");
        const auto count = static_cast<std::size_t>(bytes) / 2;
        if (loop_ == BareLoop::kCopy)
            std::memcpy(samples, block_.data(), 2 * count);
        else if (loop_ == BareLoop::kSigned16)
            convert(block_.data(), samples, count);
        else
            convertSwapped(block_.data(), samples, count);
        return count / 2;
    }

    void seek(std::uint64_t) override { require(::lseek(file_, 0, SEEK_SET) == 0, "a seek fails"); }

 private:
    int file_;
    BareLoop loop_;
    std::vector<std::uint16_t> block_;
};

}  // namespace

std::unique_ptr<Player> openBareLoop(const std::string& path, BareLoop loop) {
    return std::make_unique<BareLoopPlayer>(path, loop);
}

}  // namespace atdp::bench
