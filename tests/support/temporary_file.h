#pragma once

#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>

namespace atdp::test {

// A file of its own for one test, gone with it.
class TemporaryFile {
 public:
    explicit TemporaryFile(const std::string& bytes, const std::string& suffix = ".bin") {
        path_ = (std::filesystem::temp_directory_path() / "atdp-test-XXXXXX").string() + suffix;
        ::close(::mkstemps(path_.data(), static_cast<int>(suffix.size())));
        std::ofstream(path_, std::ios::binary) << bytes;
    }
    TemporaryFile(const TemporaryFile&) = delete;
    TemporaryFile& operator=(const TemporaryFile&) = delete;
    ~TemporaryFile() { std::filesystem::remove(path_); }

    const std::string& path() const { return path_; }

 private:
    std::string path_;
};

// Changes what is in a file from its start on.
inline void overwrite(const std::string& path, const std::string& bytes) {
    std::fstream(path, std::ios::binary | std::ios::in | std::ios::out) << bytes;
}

}  // namespace atdp::test
