// The module's log, kept back so that a failure is one clear line. A decoder logs on the thread
// that calls it, so each thread has the last line of its own file, however many are worked on at
// once.
#pragma once

#include <string>

#include "platform/log.h"

namespace atdp::host {

class ModuleLog {
 public:
    // The log sink; `context` is a ModuleLog. Any thread.
    static void receive(const char* line, void* context);

    // Passes each line on as well. To be called before decoders run.
    void passOn(LogSink sink, void* context);

    // To be called before asking the module for something that may fail, by the same thread.
    void forget();

    // What the status number of this thread's last line means, in words; `otherwise` when it has
    // none.
    std::string reason(const std::string& otherwise);

 private:
    LogSink sink_ = nullptr;
    void* context_ = nullptr;
};

}  // namespace atdp::host
