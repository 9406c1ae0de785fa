#include "platform/log.h"

#include <sys/syscall.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <cstdio>
#include <ctime>
#include <mutex>
#include <string>

#include "services/core_foundation_object.h"

namespace atdp::services {
namespace {

struct Sink {
    LogSink write = nullptr;
    void* context = nullptr;
};

std::mutex sinkMutex;
Sink currentSink;

void writeToStandardError(const char* line) {
    const auto now = std::chrono::system_clock::now();
    const std::time_t seconds = std::chrono::system_clock::to_time_t(now);
    const auto milliseconds =
        std::chrono::duration_cast<std::chrono::milliseconds>(now.time_since_epoch()).count() %
        1000;
    std::tm local{};
    localtime_r(&seconds, &local);
    char time[32];
    std::strftime(time, sizeof(time), "%F %T", &local);
    std::fprintf(stderr, "%s.%03d %s[%ld:%ld] %s\n", time, static_cast<int>(milliseconds),
                 program_invocation_short_name, static_cast<long>(getpid()), syscall(SYS_gettid),
                 line);
}

// One conversion of the format, from % to its letter, with its argument.
std::string formatted(const std::string& conversion, const LogArgument& argument) {
    if (const auto* object = std::get_if<CFTypeRef>(&argument))
        return *object ? static_cast<const CFObject*>(*object)->description() : "(null)";
    char text[64];
    std::snprintf(text, sizeof(text), conversion.c_str(), std::get<long>(argument));
    return text;
}

std::string formattedLine(const std::string& format, std::initializer_list<LogArgument> arguments) {
    std::string line;
    const LogArgument* argument = arguments.begin();
    std::size_t position = 0;
    while (position < format.size()) {
        const std::size_t start = format.find('%', position);
        line += format.substr(position, start - position);
        if (start == std::string::npos) break;
        const std::size_t end = format.find_first_of("dxX@", start);
        if (end == std::string::npos || argument == arguments.end())
            return line + format.substr(start);
        line += formatted(format.substr(start, end + 1 - start), *argument++);
        position = end + 1;
    }
    return line;
}

}  // namespace
}  // namespace atdp::services

void NSLogArguments(const char* format, std::initializer_list<LogArgument> arguments) {
    using namespace atdp::services;
    try {
        const std::string line = formattedLine(format, arguments);
        Sink sink;
        {
            const std::lock_guard lock(sinkMutex);
            sink = currentSink;
        }
        if (sink.write != nullptr)
            sink.write(line.c_str(), sink.context);
        else
            writeToStandardError(line.c_str());
    } catch (...) {
        // A line that there is no memory for is lost; the call it tells of goes on.
    }
}

void AudioToolboxDecoderPluginSetLogSink(LogSink sink, void* context) {
    const std::lock_guard lock(atdp::services::sinkMutex);
    atdp::services::currentSink = {sink, context};
}
