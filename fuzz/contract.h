// Promises that a fuzz target checks.
#pragma once

#include <cstdio>
#include <cstdlib>

namespace atdp::fuzz {

// Stops at a broken promise, so that the fuzzer keeps the input.
inline void require(bool holds, const char* promise) {
    if (holds) return;
    std::fprintf(stderr, "broken promise: %s\n", promise);
    std::abort();
}

}  // namespace atdp::fuzz
