#include "host/wav_writer.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <string_view>
#include <utility>

namespace atdp::host {
namespace {

constexpr std::uint16_t kFormatPcm = 1;
constexpr std::uint16_t kFormatFloat = 3;
constexpr std::uint16_t kFormatExtensible = 0xFFFE;

// What follows the format's number in the identifier of an extensible format.
constexpr std::string_view kIdentifierEnd(
    "\x00\x00\x00\x00\x10\x00\x80\x00\x00\xAA\x00\x38\x9B\x71", 14);

constexpr std::uint32_t kUnknownSize = 0xFFFFFFFF;
constexpr std::uint32_t kLargeSizesBytes = 28;  // content of the chunk JUNK or ds64

// Collects little-endian fields.
class Fields {
 public:
    void text(std::string_view characters) {
        for (const char character : characters) bytes_.push_back(static_cast<std::byte>(character));
    }
    void u16(std::uint64_t value) { number(value, 2); }
    void u32(std::uint64_t value) { number(value, 4); }
    void u64(std::uint64_t value) { number(value, 8); }
    std::vector<std::byte> take() { return std::move(bytes_); }

 private:
    void number(std::uint64_t value, int bytes) {
        for (int i = 0; i < bytes; ++i) bytes_.push_back(static_cast<std::byte>(value >> (8 * i)));
    }

    std::vector<std::byte> bytes_;
};

std::uint64_t atMost32Bits(std::uint64_t value) {
    return std::min<std::uint64_t>(value, kUnknownSize);
}

// The size of the content of the chunk "fmt ".
std::uint32_t formatBytes(SampleEncoding encoding, bool extensible) {
    if (extensible) return 40;
    return encoding == SampleEncoding::kFloat32 ? 18 : 16;
}

void addFormat(Fields& fields, SampleEncoding encoding, bool extensible, std::uint32_t rate,
               std::uint32_t channels) {
    const std::uint16_t format = encoding == SampleEncoding::kFloat32 ? kFormatFloat : kFormatPcm;
    const std::uint32_t frameBytes = channels * bytesPerSample(encoding);
    const std::uint32_t bits = 8 * bytesPerSample(encoding);
    fields.text("fmt ");
    fields.u32(formatBytes(encoding, extensible));
    fields.u16(extensible ? kFormatExtensible : format);
    fields.u16(channels);
    fields.u32(rate);
    fields.u32(atMost32Bits(std::uint64_t{rate} * frameBytes));
    fields.u16(frameBytes);
    fields.u16(bits);
    if (extensible) {
        fields.u16(22);    // bytes of what follows
        fields.u16(bits);  // bits of a sample that matter
        fields.u32(0);     // no channel has a place of its own
        fields.u16(format);
        fields.text(kIdentifierEnd);
    } else if (format == kFormatFloat) {
        fields.u16(0);  // bytes of what follows
    }
}

}  // namespace

WavWriter::WavWriter(OutputFile& output, SampleEncoding encoding, float rate,
                     std::uint32_t channels)
    : output_(output),
      encoding_(encoding),
      rate_(static_cast<std::uint32_t>(std::clamp(std::round(double{rate}), 1.0, 4294967295.0))),
      channels_(channels) {
    output_.write(header(false));
}

void WavWriter::write(std::span<const std::byte> frames) {
    output_.write(frames);
    dataBytes_ += frames.size();
}

void WavWriter::finish() {
    if (dataBytes_ % 2 != 0) output_.write(std::array{std::byte{0}});
    if (output_.canReplace()) output_.replaceStart(header(true));
}

// Room for 64-bit sizes stands after the RIFF header from the start, and is put to use when the
// sizes turn out not to fit into 32 bits. The frame count of the chunk "fact" cannot say that it is
// unknown, so a pipe gets none.
std::vector<std::byte> WavWriter::header(bool sizesKnown) const {
    const bool extensible = channels_ > 2 || encoding_ == SampleEncoding::kSigned24;
    const bool hasFact = encoding_ == SampleEncoding::kFloat32 && output_.canReplace();
    const std::uint64_t frames = dataBytes_ / (channels_ * bytesPerSample(encoding_));
    const std::uint64_t riffBytes = 4 + (8 + kLargeSizesBytes) +
                                    (8 + formatBytes(encoding_, extensible)) + (hasFact ? 12 : 0) +
                                    8 + dataBytes_ + dataBytes_ % 2;
    const bool large = sizesKnown && riffBytes >= kUnknownSize;
    const bool small = sizesKnown && !large;

    Fields fields;
    fields.text(large ? "RF64" : "RIFF");
    fields.u32(small ? riffBytes : kUnknownSize);
    fields.text("WAVE");
    fields.text(large ? "ds64" : "JUNK");
    fields.u32(kLargeSizesBytes);
    fields.u64(large ? riffBytes : 0);
    fields.u64(large ? dataBytes_ : 0);
    fields.u64(large ? frames : 0);
    fields.u32(0);  // no further large chunks
    addFormat(fields, encoding_, extensible, rate_, channels_);
    if (hasFact) {
        fields.text("fact");
        fields.u32(4);
        fields.u32(atMost32Bits(frames));
    }
    fields.text("data");
    fields.u32(small ? dataBytes_ : kUnknownSize);
    return fields.take();
}

}  // namespace atdp::host
