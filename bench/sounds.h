#pragma once

#include <filesystem>
#include <string>

namespace atdp::bench {

// Sound files that are compared on, made by the programs ffmpeg, lame, sox and twolame in a folder
// that is gone with this.
class Sounds {
 public:
    static constexpr int kAlbum = 20;

    // Of so many seconds each, but for untold.mp3, an album of kAlbum times that. Throws
    // std::runtime_error.
    explicit Sounds(double seconds);
    ~Sounds();
    Sounds(const Sounds&) = delete;
    Sounds& operator=(const Sounds&) = delete;

    std::string path(const std::string& name) const { return folder_ / name; }

 private:
    std::filesystem::path folder_;
};

}  // namespace atdp::bench
