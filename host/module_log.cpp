#include "host/module_log.h"

#include <charconv>
#include <cstdint>
#include <new>
#include <optional>
#include <string_view>

#include "plugin/module.h"

namespace atdp::host {
namespace {

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
    auto& log = *static_cast<ModuleLog*>(context);
    const std::lock_guard lock(log.mutex_);
    try {
        log.lastLines_[std::this_thread::get_id()] = line;
    } catch (const std::bad_alloc&) {
        log.lastLines_.erase(std::this_thread::get_id());
    }
}

void ModuleLog::forget() {
    const std::lock_guard lock(mutex_);
    lastLines_.erase(std::this_thread::get_id());
}

std::string ModuleLog::reason(const std::string& otherwise) {
    const std::lock_guard lock(mutex_);
    const auto found = lastLines_.find(std::this_thread::get_id());
    if (found == lastLines_.end()) return otherwise;
    const std::optional<std::int32_t> status = statusOnLine(found->second);
    return status ? wordsForStatus(*status) : otherwise;
}

}  // namespace atdp::host
