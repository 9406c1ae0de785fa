// What a file in memory is described as.
#pragma once

#include <string>

#include "services/containers/recognition.h"
#include "tests/support/memory_source.h"

namespace atdp::test {

inline services::Result<services::SoundDescription> describe(const std::string& bytes) {
    MemorySource source(bytes);
    return services::describeSound(source);
}

// Why it is not; kNotFound where it is.
inline services::Failure refusal(const std::string& bytes) {
    const auto sound = describe(bytes);
    return sound ? services::Failure::kNotFound : sound.failure();
}

}  // namespace atdp::test
