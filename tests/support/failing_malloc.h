// Makes memory run out for the tested code: malloc answers null, and new throws. The executable
// must be linked with --wrap=malloc.
#pragma once

#include <cstddef>

namespace scripted {

class FailingMalloc {
 public:
    explicit FailingMalloc(std::size_t fromBytes);  // smaller blocks are still given
    ~FailingMalloc();
    FailingMalloc(const FailingMalloc&) = delete;
    FailingMalloc& operator=(const FailingMalloc&) = delete;
};

}  // namespace scripted
