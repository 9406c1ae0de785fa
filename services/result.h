// A value or the reason why there is none.
#pragma once

#include <utility>
#include <variant>

#include "platform/core_audio_types.h"

namespace atdp::services {

enum class Failure {
    kUnreadable,         // the bytes cannot be read, or are not a regular file's
    kNotFound,           // no such file
    kNotPermitted,       // the file may not be read
    kUnknownFileType,    // nobody recognises the content
    kDamaged,            // a known container, damaged beyond use
    kUnsupportedFormat,  // a format that is not decoded or delivered
};

// The published status for a failure.
OSStatus statusFor(Failure failure);

template <class Value>
class [[nodiscard]] Result {
 public:
    Result(Value value) : state_(std::in_place_index<0>, std::move(value)) {}
    Result(Failure failure) : state_(std::in_place_index<1>, failure) {}

    explicit operator bool() const { return state_.index() == 0; }
    Value& operator*() { return *std::get_if<0>(&state_); }
    const Value& operator*() const { return *std::get_if<0>(&state_); }
    Value* operator->() { return std::get_if<0>(&state_); }
    const Value* operator->() const { return std::get_if<0>(&state_); }
    Failure failure() const { return *std::get_if<1>(&state_); }

 private:
    std::variant<Value, Failure> state_;
};

}  // namespace atdp::services
