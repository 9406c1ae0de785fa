// A file that lives in memory, for code that opens paths.
#pragma once

#include <sys/mman.h>
#include <unistd.h>

#include <span>
#include <string>

#include "fuzz/contract.h"

namespace atdp::fuzz {

class MemoryFile {
 public:
    explicit MemoryFile(std::span<const std::uint8_t> bytes) : file_(::memfd_create("input", 0)) {
        require(file_ >= 0, "a file in memory can be made");
        const auto written = ::write(file_, bytes.data(), bytes.size());
        require(written == static_cast<ssize_t>(bytes.size()), "a file in memory can be filled");
    }
    MemoryFile(const MemoryFile&) = delete;
    MemoryFile& operator=(const MemoryFile&) = delete;
    ~MemoryFile() { ::close(file_); }

    std::string path() const { return "/proc/self/fd/" + std::to_string(file_); }

 private:
    int file_;
};

}  // namespace atdp::fuzz
