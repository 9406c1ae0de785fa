// What became of one of many files.
#pragma once

#include <string>

namespace atdp::host {

enum class Outcome {
    kDone,
    kComplete,  // nothing was left to do
    kNotSound,  // found in a folder, and no sound file by name or content
    kFailed,
};

struct FileResult {
    Outcome outcome = Outcome::kDone;
    std::string text;   // for standard output
    std::string error;  // the error line of a failed file; empty: `text` tells enough
};

}  // namespace atdp::host
