#include "tests/support/failing_disk.h"

#include <sys/types.h>

#include <algorithm>
#include <cerrno>
#include <optional>

namespace {
using atdp::test::FailingDisk;

std::optional<FailingDisk::Fault> fault;
std::int64_t unreadableFrom = 0;
bool wasInterrupted = false;
}  // namespace

// The names that the linker gives to the calls and to the system's own function.
extern "C" {
ssize_t __real_pread(int file, void* bytes, std::size_t count, off_t offset);
ssize_t __wrap_pread(int file, void* bytes, std::size_t count, off_t offset);
}

ssize_t __wrap_pread(int file, void* bytes, std::size_t count, off_t offset) {
    if (fault == FailingDisk::Fault::kInterrupted && (wasInterrupted = !wasInterrupted)) {
        errno = EINTR;
        return -1;
    }
    if (fault == FailingDisk::Fault::kByteByByte) count = std::min<std::size_t>(count, 1);
    if (fault == FailingDisk::Fault::kUnreadable) {
        if (offset >= unreadableFrom) {
            errno = EIO;
            return -1;
        }
        count = std::min(count, static_cast<std::size_t>(unreadableFrom - offset));
    }
    return __real_pread(file, bytes, count, offset);
}

atdp::test::FailingDisk::FailingDisk(Fault kind, std::int64_t fromOffset) {
    fault = kind;
    unreadableFrom = fromOffset;
}
atdp::test::FailingDisk::~FailingDisk() {
    fault.reset();
}
