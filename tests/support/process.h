// What the process uses, and its use at the limit.
#pragma once

#include <fcntl.h>
#include <sys/resource.h>
#include <unistd.h>

#include <cstdint>
#include <filesystem>
#include <fstream>
#include <iterator>

#include "tests/support/failing_memory.h"

namespace atdp::test {

// A process has no more descriptors than those in use now.
class NoDescriptorsLeft {
 public:
    NoDescriptorsLeft() {
        ::getrlimit(RLIMIT_NOFILE, &before_);
        rlimit limit = before_;
        const int next = ::open("/dev/null", O_RDONLY);
        limit.rlim_cur = static_cast<rlim_t>(next);
        ::close(next);
        ::setrlimit(RLIMIT_NOFILE, &limit);
    }
    NoDescriptorsLeft(const NoDescriptorsLeft&) = delete;
    NoDescriptorsLeft& operator=(const NoDescriptorsLeft&) = delete;
    ~NoDescriptorsLeft() { ::setrlimit(RLIMIT_NOFILE, &before_); }

 private:
    rlimit before_{};
};

struct Usage {
    std::int64_t descriptors = 0, residentBytes = 0, blocks = 0;
};

inline Usage usage() {
    Usage now;
    now.descriptors = std::distance(std::filesystem::directory_iterator("/proc/self/fd"),
                                    std::filesystem::directory_iterator());
    std::int64_t pages = 0;
    std::ifstream("/proc/self/statm") >> pages >> pages;
    now.residentBytes = pages * ::sysconf(_SC_PAGESIZE);
    now.blocks = blocksInUse();
    return now;
}

}  // namespace atdp::test
