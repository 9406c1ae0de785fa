// Decodes a file, or a part of it, into another.
#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <string>

#include "host/delivery_options.h"
#include "host/frame_reader.h"
#include "host/opened_file.h"
#include "host/sample_encoding.h"

namespace atdp::host {

struct DecodeOptions {
    bool raw = false;  // samples and nothing else, rather than a WAV file
    SampleEncoding encoding = SampleEncoding::kFloat32;
    double fromSeconds = 0;
    std::optional<double> forSeconds;  // nothing: to the end
    std::uint32_t requestFrames = 0;   // 0: what the decoder prefers
    DeliveryOptions delivery;
    std::optional<double> thresholdDb;
};

class FileDecode {
 public:
    // Opens the file. The options must outlive this. Throws Failure.
    FileDecode(PluginModule& module, const std::string& path, const DecodeOptions& options);
    FileDecode(const FileDecode&) = delete;
    FileDecode& operator=(const FileDecode&) = delete;

    // How many frames there will be, give or take the decoder's rounding.
    double expectedFrames() const;
    float rate() const { return reader_.rate(); }  // Hz

    // Writes the whole output, which OutputFile knows what to do with, and reports now and then how
    // many frames are done. To be called once. Throws what OutputFile throws, and Interrupted on a
    // stop signal.
    void writeTo(const std::string& outputPath,
                 const std::function<void(std::uint64_t framesDone)>& report);

 private:
    std::uint64_t framesIn(double seconds) const;
    std::uint64_t mostFrames() const;

    const DecodeOptions& options_;
    OpenedFile file_;
    FrameReader reader_;
};

}  // namespace atdp::host
