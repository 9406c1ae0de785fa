#include "services/io/file_source.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <utility>

namespace atdp::services {
namespace {

class FileDescriptor {
 public:
    explicit FileDescriptor(int descriptor) : descriptor_(descriptor) {}
    FileDescriptor(FileDescriptor&& other) noexcept
        : descriptor_(std::exchange(other.descriptor_, -1)) {}
    FileDescriptor& operator=(FileDescriptor&&) = delete;
    ~FileDescriptor() {
        if (descriptor_ >= 0) ::close(descriptor_);
    }
    int get() const { return descriptor_; }

 private:
    int descriptor_;
};

class FileSource final : public ByteSource {
 public:
    FileSource(FileDescriptor descriptor, std::uint64_t sizeBytes)
        : descriptor_(std::move(descriptor)), sizeBytes_(sizeBytes) {}

    std::uint64_t sizeBytes() const override { return sizeBytes_; }

    Result<std::size_t> readAt(std::uint64_t offset, std::span<std::byte> out) override {
        std::size_t done = 0;
        if (!read(offset, out, done)) return Failure::kUnreadable;
        return done;
    }

    Result<std::size_t> readUntilFailure(std::uint64_t offset, std::span<std::byte> out) override {
        std::size_t done = 0;
        if (!read(offset, out, done) && done == 0) return Failure::kUnreadable;
        return done;
    }

 private:
    // False where the file cannot be read; `done` bytes were read before that place.
    bool read(std::uint64_t offset, std::span<std::byte> out, std::size_t& done) const {
        if (offset >= sizeBytes_) return true;
        while (done < out.size()) {
            const ssize_t got = ::pread(descriptor_.get(), out.data() + done, out.size() - done,
                                        static_cast<off_t>(offset + done));
            if (got == 0) break;
            if (got > 0)
                done += static_cast<std::size_t>(got);
            else if (errno != EINTR)
                return false;
        }
        return true;
    }

    FileDescriptor descriptor_;
    std::uint64_t sizeBytes_;
};

Failure failureForErrno(int error) {
    switch (error) {
        case ENOENT:
        case ENOTDIR:
            return Failure::kNotFound;
        case EACCES:
        case EPERM:
            return Failure::kNotPermitted;
        default:
            return Failure::kUnreadable;
    }
}

}  // namespace

Result<std::shared_ptr<ByteSource>> openFileSource(const std::string& path) {
    // Non-blocking, so that opening a FIFO by mistake does not wait for a writer.
    FileDescriptor descriptor(::open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY));
    if (descriptor.get() < 0) return failureForErrno(errno);
    struct stat status {};
    if (::fstat(descriptor.get(), &status) != 0 || !S_ISREG(status.st_mode))
        return Failure::kUnreadable;
    return std::shared_ptr<ByteSource>(std::make_shared<FileSource>(
        std::move(descriptor), static_cast<std::uint64_t>(status.st_size)));
}

}  // namespace atdp::services
