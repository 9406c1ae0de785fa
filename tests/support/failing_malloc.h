// Makes malloc, as the tested code calls it, answer null. The executable must be linked with
// --wrap=malloc.
#pragma once

namespace scripted {

class FailingMalloc {
 public:
    FailingMalloc();
    ~FailingMalloc();
    FailingMalloc(const FailingMalloc&) = delete;
    FailingMalloc& operator=(const FailingMalloc&) = delete;
};

}  // namespace scripted
