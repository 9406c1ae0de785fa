// A sound file opened by one of the decoders that are compared.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <stdexcept>
#include <string>

namespace atdp::bench {

class Player {
 public:
    virtual ~Player() = default;

    // Reads up to so many frames of interleaved floats; 0 at the end. Throws std::runtime_error.
    virtual std::size_t read(float* samples, std::size_t frames) = 0;

    // The next frame read is this one, exactly. Throws std::runtime_error.
    virtual void seek(std::uint64_t frame) = 0;
};

using MakePlayer = std::function<std::unique_ptr<Player>(const std::string& path)>;

// Every benchmark is to fail where a decoder does.
inline void require(bool holds, const char* what) {
    if (!holds) throw std::runtime_error(what);
}

}  // namespace atdp::bench
