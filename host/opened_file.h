// From a path to an open decoder, or to the reason why there is none.
#pragma once

#include <memory>
#include <optional>
#include <string>

#include "host/plugin_module.h"

namespace atdp::host {

// Closes a decoder before it goes, also one whose open failed.
struct DecoderCloser {
    void operator()(SeekableFileDecoder* decoder) const;
};

struct OpenedFile {
    std::string path;
    const DecoderClass* decoderClass;
    std::unique_ptr<SeekableFileDecoder, DecoderCloser> decoder;
};

// With a threshold in decibels, silence at the ends of MPEG files is cut (0: it is not). Throws
// Failure with the reason in words.
OpenedFile openFile(PluginModule& module, const std::string& path,
                    std::optional<double> thresholdDb = std::nullopt);

// What the system says of a failure, by its number.
std::string wordsForErrno(int number);

// Why nothing can be read from the file, whatever is inside; nothing when it can be read.
std::optional<std::string> whyUnreadable(const std::string& path);

}  // namespace atdp::host
