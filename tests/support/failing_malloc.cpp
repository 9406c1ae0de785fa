#include "tests/support/failing_malloc.h"

#include <cstdlib>
#include <limits>
#include <new>

namespace {
constexpr std::size_t kNever = std::numeric_limits<std::size_t>::max();
std::size_t failingFrom = kNever;
}  // namespace

// The names that the linker gives to the calls and to the allocator's own function.
extern "C" {
void* __real_malloc(std::size_t size);
void* __wrap_malloc(std::size_t size);
}

void* __wrap_malloc(std::size_t size) {
    return size >= failingFrom ? nullptr : __real_malloc(size);
}

void* operator new(std::size_t size) {
    if (void* block = std::malloc(size)) return block;
    throw std::bad_alloc();
}
void* operator new(std::size_t size, const std::nothrow_t&) noexcept {
    return std::malloc(size);
}
void operator delete(void* block) noexcept {
    std::free(block);
}
void operator delete(void* block, std::size_t) noexcept {
    std::free(block);
}

scripted::FailingMalloc::FailingMalloc(std::size_t fromBytes) {
    failingFrom = fromBytes;
}
scripted::FailingMalloc::~FailingMalloc() {
    failingFrom = kNever;
}
