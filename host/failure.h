// How a command ends early.
#pragma once

#include <stdexcept>
#include <string>

namespace atdp::host {

// A file, the plug-in or the sound device failed. what() is the whole error line after "atdp: ".
struct Failure : std::runtime_error {
    Failure(const std::string& subject, const std::string& reason)
        : std::runtime_error(subject + ": " + reason) {}
};

// The disk that is written to has no room left.
struct DiskFull : Failure {
    using Failure::Failure;
};

// The command line asks for something that cannot be meant.
struct UsageError : std::runtime_error {
    using std::runtime_error::runtime_error;
};

// Whoever read our output went away, as `head` does: the command ends without a word.
struct ClosedPipe {};

// The user asked us to stop.
struct Interrupted {};

}  // namespace atdp::host
