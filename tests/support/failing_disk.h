// Makes reads of files fail for the tested code. The executable must be linked with --wrap=pread.
#pragma once

#include <cstdint>

namespace atdp::test {

class FailingDisk {
 public:
    enum class Fault {
        kUnreadable,   // bytes from an offset on
        kInterrupted,  // by a signal, every other time
        kByteByByte,   // that is all that one call reads
    };
    explicit FailingDisk(Fault fault, std::int64_t fromOffset = 0);
    ~FailingDisk();
    FailingDisk(const FailingDisk&) = delete;
    FailingDisk& operator=(const FailingDisk&) = delete;
};

}  // namespace atdp::test
