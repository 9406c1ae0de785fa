// The module's log, kept back so that a failure is one clear line.
#pragma once

#include <mutex>
#include <string>

namespace atdp::host {

class ModuleLog {
 public:
    // The log sink; `context` is a ModuleLog. Any thread.
    static void receive(const char* line, void* context);

    // To be called before asking the module for something that may fail.
    void forget();

    // What the last line's status number means, in words; `otherwise` when it has none.
    std::string reason(const std::string& otherwise);

 private:
    std::mutex mutex_;
    std::string lastLine_;
};

}  // namespace atdp::host
