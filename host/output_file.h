// A file in the making.
#pragma once

#include <sys/types.h>

#include <cstddef>
#include <span>
#include <string>
#include <vector>

#include "host/descriptor.h"

namespace atdp::host {

// Written beside its final name under a name of its own, and renamed once it is whole, so that a
// half-written file never stands under the final name; without commit() nothing stays behind.
// Standard output ("-"), devices and pipes are written directly.
//
// Every call throws Failure when the system refuses, ClosedPipe when the reader of a pipe has gone
// and Interrupted when a stop signal breaks a wait.
class OutputFile {
 public:
    explicit OutputFile(const std::string& path);
    ~OutputFile();
    OutputFile(const OutputFile&) = delete;
    OutputFile& operator=(const OutputFile&) = delete;

    void write(std::span<const std::byte> bytes);

    // Whether bytes that were written can be replaced; not so on pipes and devices.
    bool canReplace() const { return start_ >= 0; }
    void replaceStart(std::span<const std::byte> bytes);

    // Gives the file its final name.
    void commit();

 private:
    void openTemporary();
    void flush();
    [[noreturn]] void fail() const;  // with the reason in errno

    std::string name_;  // for messages
    std::string finalPath_;
    std::string temporaryPath_;  // empty when written directly, and once renamed
    Descriptor descriptor_;
    off_t start_ = -1;  // offset of our first byte; -1 when bytes cannot be replaced
    std::vector<std::byte> buffer_;
};

// Throws UsageError when the paths name the same file, under whatever names.
void checkInputIsKept(const std::string& outputPath, const std::string& inputPath);

}  // namespace atdp::host
