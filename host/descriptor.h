// An open file descriptor, closed when it goes out of scope.
#pragma once

#include <unistd.h>

#include <utility>

namespace atdp::host {

class Descriptor {
 public:
    explicit Descriptor(int number = -1) : number_(number) {}  // -1 is no file
    ~Descriptor() { close(); }
    Descriptor(Descriptor&& other) noexcept : number_(std::exchange(other.number_, -1)) {}
    Descriptor& operator=(Descriptor&& other) noexcept {
        std::swap(number_, other.number_);
        return *this;
    }

    int get() const { return number_; }

    // False, with errno set, when bytes written before could not be kept.
    bool close() { return number_ < 0 || ::close(std::exchange(number_, -1)) == 0; }

 private:
    int number_;
};

}  // namespace atdp::host
