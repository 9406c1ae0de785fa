#include "host/output_file.h"

#include <fcntl.h>
#include <sys/stat.h>

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>

#include "host/failure.h"
#include "host/stop_signal.h"

namespace atdp::host {
namespace {

constexpr std::size_t kBufferBytes = 1 << 16;
constexpr std::size_t kNameBytes = 200;  // of the final name; file systems take 255 bytes in all

bool existsAsSpecialFile(const std::string& path) {
    struct stat facts;
    return ::stat(path.c_str(), &facts) == 0 && !S_ISREG(facts.st_mode);
}

// What new files are denied. Read before there are threads: to read it is to change it for a
// moment.
const mode_t kCreationMask = [] {
    const mode_t mask = ::umask(0);
    ::umask(mask);
    return mask;
}();

// That of the file to be replaced, else that of new files.
mode_t modeFor(const std::string& path) {
    struct stat facts;
    if (::stat(path.c_str(), &facts) == 0) return facts.st_mode & 07777;
    return 0666 & ~kCreationMask;
}

// Where in a regular file writing starts; -1 for anything else, and for a file that takes bytes
// only at its end.
off_t replaceableStart(int descriptor) {
    struct stat facts;
    if (::fstat(descriptor, &facts) != 0 || !S_ISREG(facts.st_mode)) return -1;
    if ((::fcntl(descriptor, F_GETFL) & O_APPEND) != 0) return -1;
    return ::lseek(descriptor, 0, SEEK_CUR);
}

}  // namespace

OutputFile::OutputFile(const std::string& path)
    : name_(path == "-" ? "standard output" : path), finalPath_(path) {
    buffer_.reserve(kBufferBytes);
    if (path == "-") {
        descriptor_ = Descriptor(::fcntl(STDOUT_FILENO, F_DUPFD_CLOEXEC, 0));
    } else if (existsAsSpecialFile(path)) {
        descriptor_ = Descriptor(::open(path.c_str(), O_WRONLY | O_CLOEXEC));
    } else {
        openTemporary();
    }
    if (descriptor_.get() < 0) fail();
    start_ = replaceableStart(descriptor_.get());
}

// What was written before a failure still reaches a pipe or device.
OutputFile::~OutputFile() {
    if (!temporaryPath_.empty()) {
        ::unlink(temporaryPath_.c_str());
        return;
    }
    try {
        flush();
    } catch (...) {
        // The failure that ended the program has been told, or this is its echo.
    }
}

void OutputFile::openTemporary() {
    if (::access(finalPath_.c_str(), F_OK) == 0) {
        // The rename would replace a link, and a file that its owner protects from writing.
        if (::access(finalPath_.c_str(), W_OK) != 0) fail();
        finalPath_ = std::filesystem::canonical(finalPath_);
    }
    const std::filesystem::path final(finalPath_);
    std::string name = ".";
    name += final.filename().string().substr(0, kNameBytes);
    std::string temporary = final.parent_path() / (name += ".XXXXXX");
    descriptor_ = Descriptor(::mkostemp(temporary.data(), O_CLOEXEC));
    if (descriptor_.get() < 0) return;
    temporaryPath_ = std::move(temporary);
    ::fchmod(descriptor_.get(), modeFor(finalPath_));  // refused where files have no modes
}

void OutputFile::write(std::span<const std::byte> bytes) {
    if (buffer_.size() + bytes.size() > kBufferBytes) flush();
    buffer_.insert(buffer_.end(), bytes.begin(), bytes.end());
}

void OutputFile::flush() {
    std::span<const std::byte> left(buffer_);
    while (!left.empty()) {
        const ssize_t bytes = ::write(descriptor_.get(), left.data(), left.size());
        if (bytes >= 0) {
            left = left.subspan(static_cast<std::size_t>(bytes));
        } else if (errno == EINTR) {
            checkForStop();
        } else {
            fail();
        }
    }
    buffer_.clear();
}

void OutputFile::replaceStart(std::span<const std::byte> bytes) {
    flush();
    if (::pwrite(descriptor_.get(), bytes.data(), bytes.size(), start_) < 0) fail();
}

void OutputFile::commit() {
    flush();
    if (!descriptor_.close()) fail();
    if (temporaryPath_.empty()) return;
    if (std::rename(temporaryPath_.c_str(), finalPath_.c_str()) != 0) fail();
    temporaryPath_.clear();
}

void OutputFile::fail() const {
    const int reason = errno;
    if (reason == EPIPE) throw ClosedPipe();
    if (reason == EINTR) checkForStop();
    if (reason == ENOSPC || reason == EDQUOT) throw DiskFull(name_, std::strerror(reason));
    throw Failure(name_, std::strerror(reason));
}

void checkInputIsKept(const std::string& outputPath, const std::string& inputPath) {
    std::error_code ignored;  // of paths that do not exist
    if (std::filesystem::equivalent(outputPath, inputPath, ignored)) {
        throw UsageError(outputPath +
                         ": the output would replace the input (name another with -o)");
    }
}

}  // namespace atdp::host
