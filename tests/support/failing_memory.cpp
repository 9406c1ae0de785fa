// Takes the place of the C and C++ allocators. Compiled without sanitizers: it is called before
// they are ready.
#include "tests/support/failing_memory.h"

#include <dlfcn.h>
#include <unwind.h>

#include <atomic>
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <new>

namespace {
using atdp::test::FailingMemory;

std::atomic<std::int64_t> blocks{0};

struct Failing {
    bool isOn = false;
    FailingMemory::Mode mode{};
    std::size_t n = 0;
    std::size_t seen = 0;
    bool hasFailedInTagLib = false;
};
thread_local Failing failing;

_Unwind_Reason_Code stopInLibrary(_Unwind_Context* context, void* name) {
    Dl_info caller{};
    const bool isInLibrary =
        ::dladdr(reinterpret_cast<void*>(_Unwind_GetIP(context)), &caller) != 0 &&
        std::strstr(caller.dli_fname, static_cast<const char*>(name)) != nullptr;
    return isInLibrary ? _URC_NORMAL_STOP : _URC_NO_REASON;
}

// Whether a library of that name is among the callers.
bool isCalledBy(const char* library) {
    failing.isOn = false;
    const bool answer =
        _Unwind_Backtrace(stopInLibrary, const_cast<char*>(library)) != _URC_END_OF_STACK;
    failing.isOn = true;
    return answer;
}

bool fails(std::size_t bytes) {
    if (!failing.isOn) return false;
    const std::size_t number = failing.seen++;
    bool isDue = false;
    if (failing.mode == FailingMemory::Mode::kLargerThan) {
        isDue = bytes > failing.n;
    } else if (failing.mode == FailingMemory::Mode::kOnce ? number == failing.n
                                                          : number >= failing.n) {
        isDue = !isCalledBy("/libsoxr.");
        failing.hasFailedInTagLib |= isDue && isCalledBy("/libtag.");
    }
    if (isDue) errno = ENOMEM;
    return isDue;
}

void* counted(void* block) {
    if (block != nullptr) blocks.fetch_add(1, std::memory_order_relaxed);
    return block;
}
}  // namespace

// The allocator itself: the sanitizer's where there is one, else that of the C library.
extern "C" {
[[gnu::weak]] void* __interceptor_malloc(std::size_t bytes);
[[gnu::weak]] void* __interceptor_calloc(std::size_t count, std::size_t bytes);
[[gnu::weak]] void* __interceptor_realloc(void* block, std::size_t bytes);
[[gnu::weak]] void* __interceptor_memalign(std::size_t alignment, std::size_t bytes);
[[gnu::weak]] void __interceptor_free(void* block);
void* __libc_malloc(std::size_t bytes);
void* __libc_calloc(std::size_t count, std::size_t bytes);
void* __libc_realloc(void* block, std::size_t bytes);
void* __libc_memalign(std::size_t alignment, std::size_t bytes);
void __libc_free(void* block);

void* malloc(std::size_t bytes) noexcept {
    if (fails(bytes)) return nullptr;
    return counted((__interceptor_malloc ? __interceptor_malloc : __libc_malloc)(bytes));
}
void* calloc(std::size_t count, std::size_t bytes) noexcept {
    if (fails(count * bytes)) return nullptr;
    return counted((__interceptor_calloc ? __interceptor_calloc : __libc_calloc)(count, bytes));
}
void* realloc(void* block, std::size_t bytes) noexcept {
    if (fails(bytes)) return nullptr;
    void* moved = (__interceptor_realloc ? __interceptor_realloc : __libc_realloc)(block, bytes);
    if (block == nullptr) return counted(moved);
    if (moved == nullptr && bytes == 0) blocks.fetch_sub(1, std::memory_order_relaxed);
    return moved;
}
void* memalign(std::size_t alignment, std::size_t bytes) noexcept {
    if (fails(bytes)) return nullptr;
    return counted(
        (__interceptor_memalign ? __interceptor_memalign : __libc_memalign)(alignment, bytes));
}
void* aligned_alloc(std::size_t alignment, std::size_t bytes) noexcept {
    return memalign(alignment, bytes);
}
int posix_memalign(void** block, std::size_t alignment, std::size_t bytes) noexcept {
    *block = memalign(alignment, bytes);
    return *block == nullptr ? ENOMEM : 0;
}
void free(void* block) noexcept {
    if (block != nullptr) blocks.fetch_sub(1, std::memory_order_relaxed);
    (__interceptor_free ? __interceptor_free : __libc_free)(block);
}
}

void* operator new(std::size_t bytes) {
    if (void* block = std::malloc(bytes)) return block;
    throw std::bad_alloc();
}
void* operator new[](std::size_t bytes) {
    return operator new(bytes);
}
void* operator new(std::size_t bytes, const std::nothrow_t&) noexcept {
    return std::malloc(bytes);
}
void* operator new[](std::size_t bytes, const std::nothrow_t&) noexcept {
    return std::malloc(bytes);
}
void operator delete(void* block) noexcept {
    std::free(block);
}
void operator delete[](void* block) noexcept {
    std::free(block);
}
void operator delete(void* block, std::size_t) noexcept {
    std::free(block);
}
void operator delete[](void* block, std::size_t) noexcept {
    std::free(block);
}

// What TagLib loses is not for the leak checker either.
extern "C" [[gnu::visibility("default")]] const char* __lsan_default_suppressions() {
    return "leak:/libtag.";
}

namespace atdp::test {

FailingMemory::FailingMemory(Mode mode, std::size_t n) {
    failing = {.isOn = true, .mode = mode, .n = n};
}
FailingMemory::~FailingMemory() {
    failing.isOn = false;
}
std::size_t FailingMemory::allocations() {
    return failing.seen;
}

bool FailingMemory::hasFailedInTagLib() {
    return failing.hasFailedInTagLib;
}

std::int64_t blocksInUse() {
    return blocks.load(std::memory_order_relaxed);
}

}  // namespace atdp::test
