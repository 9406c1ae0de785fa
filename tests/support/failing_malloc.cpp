#include "tests/support/failing_malloc.h"

#include <cstddef>

namespace {
bool failing = false;
}

// The names that the linker gives to the calls and to the allocator's own function.
extern "C" {
void* __real_malloc(std::size_t size);
void* __wrap_malloc(std::size_t size);
}

void* __wrap_malloc(std::size_t size) {
    return failing ? nullptr : __real_malloc(size);
}

scripted::FailingMalloc::FailingMalloc() {
    failing = true;
}
scripted::FailingMalloc::~FailingMalloc() {
    failing = false;
}
