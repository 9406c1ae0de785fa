// No exception leaves a public entry point.
#pragma once

#include <new>

#include "include/atdp.h"

namespace atdp::c {

// What `call` answers, or the result that stands for the exception that it threw.
template <class Call>
atdp_result guarded(const Call& call) noexcept {
    try {
        return call();
    } catch (const std::bad_alloc&) {
        return ATDP_NO_MEMORY;
    } catch (...) {
        return ATDP_FAILED;
    }
}

}  // namespace atdp::c
