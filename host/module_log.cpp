#include "host/module_log.h"

#include <charconv>
#include <cstdint>
#include <new>
#include <optional>
#include <string_view>

#include "plugin/module.h"

namespace atdp::host {
namespace {

thread_local std::string lastLine;

// A line about a failed call ends in its status, as (-43) or as (0x7479703F). In hexadecimal a
// negative number has the width of a long.
std::optional<std::int32_t> statusOnLine(std::string_view line) {
    const std::size_t open = line.rfind('(');
    if (open == std::string_view::npos || line.back() != ')') return std::nullopt;
    line = line.substr(open + 1, line.size() - open - 2);
    const char* const end = line.data() + line.size();
    if (line.starts_with("0x")) {
        std::uint64_t bits = 0;
        if (std::from_chars(line.data() + 2, end, bits, 16).ptr != end) return std::nullopt;
        return static_cast<std::int32_t>(bits);
    }
    std::int32_t status = 0;
    if (std::from_chars(line.data(), end, status).ptr != end) return std::nullopt;
    return status;
}

std::string wordsForStatus(std::int32_t status) {
    switch (status) {
        case kStatusFileNotFound:
            return "no such file";
        case kStatusNotPermitted:
            return "permission denied";
        case kStatusIoError:
            return "cannot be read";
        case kStatusOutOfMemory:
            return "out of memory";
        case kStatusUnknownFileType:
            return "not a sound file of a known kind";
        case kStatusDamagedFile:
            return "the file is damaged";
        case kStatusUnsupportedFormat:
            return "its sound format is not supported";
        default:
            return "status " + std::to_string(status);
    }
}

}  // namespace

void ModuleLog::receive(const char* line, void* context) {
    try {
        lastLine = line;
    } catch (const std::bad_alloc&) {
        lastLine.clear();
    }
    const auto& log = *static_cast<const ModuleLog*>(context);
    if (log.sink_ != nullptr) log.sink_(line, log.context_);
}

void ModuleLog::passOn(LogSink sink, void* context) {
    sink_ = sink;
    context_ = context;
}

void ModuleLog::forget() {
    lastLine.clear();
}

std::string ModuleLog::reason(const std::string& otherwise) {
    const std::optional<std::int32_t> status = statusOnLine(lastLine);
    return status ? wordsForStatus(*status) : otherwise;
}

}  // namespace atdp::host
