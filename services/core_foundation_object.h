#pragma once

#include <string>

namespace atdp::services {

// What stands behind every CFTypeRef.
class CFObject {
 public:
    virtual ~CFObject() = default;

    // What %@ shows in the log.
    virtual std::string description() const = 0;
};

}  // namespace atdp::services
