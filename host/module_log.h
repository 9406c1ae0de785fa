// The module's log, kept back so that a failure is one clear line. A decoder logs on the thread
// that calls it, so each thread has the lines of its own file, however many are worked on at once.
#pragma once

#include <map>
#include <mutex>
#include <string>
#include <thread>

namespace atdp::host {

class ModuleLog {
 public:
    // The log sink; `context` is a ModuleLog. Any thread.
    static void receive(const char* line, void* context);

    // To be called before asking the module for something that may fail, by the same thread.
    void forget();

    // What the status number of this thread's last line means, in words; `otherwise` when it has
    // none.
    std::string reason(const std::string& otherwise);

 private:
    std::mutex mutex_;
    std::map<std::thread::id, std::string> lastLines_;
};

}  // namespace atdp::host
