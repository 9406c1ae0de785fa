// A file that lives in memory, for code that opens paths.
#pragma once

#include <sys/mman.h>
#include <unistd.h>

#include <algorithm>
#include <cstdint>
#include <span>
#include <string>
#include <string_view>

#include "fuzz/contract.h"

namespace atdp::fuzz {

class MemoryFile {
 public:
    // The bytes must outlive it.
    explicit MemoryFile(std::span<const std::uint8_t> bytes)
        : bytes_(bytes), file_(::memfd_create("input", 0)) {
        require(file_ >= 0, "a file in memory can be made");
        const auto written = ::write(file_, bytes.data(), bytes.size());
        require(written == static_cast<ssize_t>(bytes.size()), "a file in memory can be filled");
    }
    MemoryFile(const MemoryFile&) = delete;
    MemoryFile& operator=(const MemoryFile&) = delete;
    ~MemoryFile() { ::close(file_); }

    std::string path() const { return "/proc/self/fd/" + std::to_string(file_); }
    std::uint64_t size() const { return bytes_.size(); }

    bool has(std::string_view text) const {
        return std::search(bytes_.begin(), bytes_.end(), text.begin(), text.end()) != bytes_.end();
    }

 private:
    std::span<const std::uint8_t> bytes_;
    int file_;
};

}  // namespace atdp::fuzz
