#include "host/file_decode.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <span>
#include <vector>

#include "host/failure.h"
#include "host/output_file.h"
#include "host/stop_signal.h"
#include "host/wav_writer.h"

namespace atdp::host {
namespace {

// Where decoded frames go: a WAV file, or samples and nothing else.
class SampleSink {
 public:
    SampleSink(OutputFile& output, const std::string& inputPath, const DecodeOptions& options,
               const FrameReader& reader)
        : output_(output), encoding_(options.encoding) {
        if (options.raw) return;
        if (reader.channels() > kMostWavFrameBytes / bytesPerSample(encoding_)) {
            throw Failure(inputPath, std::to_string(reader.channels()) +
                                         " channels are too many for a WAV file (use --raw)");
        }
        wav_.emplace(output, encoding_, reader.rate(), reader.channels());
    }

    void write(std::span<const float> samples) {
        encodeSamples(samples, encoding_, bytes_);
        if (wav_) {
            wav_->write(bytes_);
        } else {
            output_.write(bytes_);
        }
    }

    void finish() {
        if (wav_) wav_->finish();
        output_.commit();
    }

 private:
    OutputFile& output_;
    SampleEncoding encoding_;
    std::optional<WavWriter> wav_;
    std::vector<std::byte> bytes_;
};

OpenedFile openForDelivery(PluginModule& module, const std::string& path,
                           const DecodeOptions& options) {
    OpenedFile file = openFile(module, path, options.thresholdDb);
    applyDelivery(file, options.delivery);
    return file;
}

}  // namespace

FileDecode::FileDecode(PluginModule& module, const std::string& path, const DecodeOptions& options)
    : options_(options),
      file_(openForDelivery(module, path, options)),
      reader_(file_, module.log(), options.requestFrames) {}

std::uint64_t FileDecode::framesIn(double seconds) const {
    constexpr double kMost = 0x1p62;  // more than any file has
    return static_cast<std::uint64_t>(
        std::min(std::round(seconds * double{reader_.rate()}), kMost));
}

std::uint64_t FileDecode::mostFrames() const {
    return options_.forSeconds ? framesIn(*options_.forSeconds)
                               : std::numeric_limits<std::uint64_t>::max();
}

double FileDecode::expectedFrames() const {
    return std::min(static_cast<double>(mostFrames()),
                    reader_.fileFrames() - static_cast<double>(framesIn(options_.fromSeconds)));
}

void FileDecode::writeTo(const std::string& outputPath,
                         const std::function<void(std::uint64_t)>& report) {
    OutputFile output(outputPath);
    SampleSink sink(output, file_.path, options_, reader_);
    const std::uint64_t fromFrame = framesIn(options_.fromSeconds);
    if (fromFrame > 0) reader_.startAt(fromFrame);
    const std::uint64_t mostFrames = this->mostFrames();
    std::uint64_t framesDone = 0;
    while (framesDone < mostFrames) {
        checkForStop();
        const std::span<const float> samples = reader_.next();
        if (samples.empty()) break;
        const std::uint64_t frames =
            std::min<std::uint64_t>(samples.size() / reader_.channels(), mostFrames - framesDone);
        sink.write(samples.first(frames * reader_.channels()));
        framesDone += frames;
        report(framesDone);
    }
    sink.finish();
}

}  // namespace atdp::host
