// Work in proportion to the input, as the bytes read from files tell it.
#pragma once

#include <fcntl.h>
#include <unistd.h>

#include <charconv>
#include <cstdint>
#include <string_view>

#include "fuzz/contract.h"
#include "fuzz/memory_file.h"

namespace atdp::fuzz {

// What this process has read from files up to now: the field rchar of /proc/self/io (proc(5)).
inline std::uint64_t bytesReadSoFar() {
    static const int counters = ::open("/proc/self/io", O_RDONLY | O_CLOEXEC);
    char text[512];
    const auto size = ::pread(counters, text, sizeof(text), 0);
    constexpr std::string_view kField = "rchar: ";
    require(size > 0 && std::string_view(text, kField.size()) == kField, "reads are counted");
    std::uint64_t bytes = 0;
    std::from_chars(text + kField.size(), text + size, bytes);
    return bytes;
}

// How many times a file may be read: to open it and find its length, for all of its tags, for one
// seek and all that is read behind it. Inputs are small, so most of these reads are of whole files;
// work that grows with the square of the input goes far beyond.
inline constexpr std::uint64_t kReadsToOpen = 10;
inline constexpr std::uint64_t kReadsOfTags = 10;
inline constexpr std::uint64_t kReadsOfSeek = 4;

// The packets of an MPEG-4 file may lie scattered, with 8 bytes of its tables for each, and behind
// a jump 2 KB are read. So much more each kind of work may cost there.
inline constexpr std::uint64_t kScattered = 2048 / 8;

// From its making to its end no more may be read than the allowance grants.
class ReadAllowance {
 public:
    ReadAllowance() : start_(bytesReadSoFar()) {}
    ReadAllowance(const ReadAllowance&) = delete;
    ReadAllowance& operator=(const ReadAllowance&) = delete;
    ~ReadAllowance() {
        require(bytesReadSoFar() - start_ <= granted_, "what is read is in proportion to the work");
    }

    void grant(std::uint64_t reads, const MemoryFile& file) {
        granted_ += reads * file.size() * (file.has("moov") ? kScattered : 1);
    }

 private:
    std::uint64_t start_;
    std::uint64_t granted_ = 32 * 1024;  // libraries read too: encodings are modules of iconv
};

}  // namespace atdp::fuzz
