// What a host and the plug-in say to each other. A host includes this header and
// plugin/module.h, and links nothing of the plug-in.
//
// Units. Time is in nanoseconds, computed in single precision from frames and rate, so a second of
// 44,100 Hz sound reads 999,999,936. Samples are interleaved 32-bit floats in native byte order;
// full scale is -1 to 1. A frame is one sample per channel.
//
// Threads. Calls on one decoder come from one thread at a time. Different decoders, and the
// plug-in object, may be used on any threads at once.
//
// Failures. Nothing throws. A failure is a result code, false, or an empty answer, as each call
// says; running out of memory becomes that call's failure.
#pragma once

#include <cstdint>
#include <map>
#include <memory>
#include <string>
#include <string_view>
#include <utility>
#include <variant>
#include <vector>

#include "decoder/result_codes.h"
#include "metadata/metadata_list.h"

namespace atdp {

// Options of openByPath: a number, or text that starts with one (other text counts as 0).
using OptionValue = std::variant<double, std::string>;
using Options = std::map<std::string, OptionValue, std::less<>>;

class Codec {
 public:
    virtual ~Codec() = default;

    // What the open file says of itself; null when no file is open or memory runs out.
    virtual std::unique_ptr<MetadataList> getMetaData() = 0;

    // Closes the file and frees what was held for it. After a successful open the decoder cannot
    // be opened again; make a new one for the next file. Also to be called after a failed open. A
    // second close does nothing.
    virtual void close() = 0;
};

class Decoder : public Codec {
 public:
    virtual std::uint64_t getDuration() = 0;             // nanoseconds
    virtual std::uint32_t getPreferredBufferSize() = 0;  // frames a request delivers best
};

class AudioSampleSource {
 public:
    virtual ~AudioSampleSource() = default;

    // Delivers the next samples. `*size` counts floats (samples of all channels together): room at
    // `samples` before the call, floats delivered after it. Only whole frames are delivered; a
    // remainder that makes no whole frame is never subtracted from the count, so ask in whole
    // frames. Fewer than asked for, down to 0, with DECODER_RESULT_OK is the end of the stream;
    // with DECODER_RESULT_READ_FAILED they are the frames before the failure.
    virtual std::int32_t getNextSamples(float* samples, std::uint32_t* size) = 0;

    // Writes `*size` zeros. Always 0; neither the count nor the position changes.
    virtual std::int32_t getDummySamples(float* samples, std::uint32_t* size) = 0;

    // Where the last delivery or seek ended, in nanoseconds.
    virtual std::uint64_t getTimestamp() = 0;

    // Encoder delay at the start and padding at the end, in frames.
    virtual std::int32_t getPrimingFrames() = 0;
    virtual std::int32_t getRemainderFrames() = 0;
};

class AudioDecoder : public Decoder, public AudioSampleSource {
 public:
    virtual float getSamplingRate() = 0;     // Hz, of the samples delivered
    virtual std::int32_t getChannels() = 0;  // of the samples delivered
    virtual std::int32_t getBits() = 0;      // 32
    virtual std::int32_t getFormat() = 0;    // 'lpcm'

    // Change what is delivered; false leaves everything as it was. A change of rate goes back to
    // the start, one of channels keeps the position. Only 32 bits are served.
    virtual bool setSamplingRate(float rate) = 0;
    virtual bool setChannels(std::int32_t channels) = 0;
    virtual bool setBits(std::int32_t bits) = 0;

    // Bytes (not bits) a second of the file's own uncompressed samples; 0 for compressed files.
    virtual std::int32_t getBitRate() = 0;
};

class AudioFileDecoder : public AudioDecoder {
 public:
    // Opens the file. `path` is bytes, passed on unchanged; `options` may be null. Answers
    // DECODER_RESULT_OK, DECODER_RESULT_FAILED or, where opening decodes,
    // DECODER_RESULT_READ_FAILED.
    virtual std::int32_t openByPath(const std::string& path, const Options* options) = 0;
};

class Seek {
 public:
    virtual ~Seek() = default;

    // Moves to a time in nanoseconds, to frame
    //     (uint64) ((float) nanoseconds * rate / 1000000000.0F)
    // with all arithmetic in single precision. DECODER_RESULT_OK, also past the end, where the next
    // delivery is empty; or DECODER_RESULT_FAILED, which leaves the position as it was.
    //
    // AudioToolboxMP3Decoder has its own way with the last second of a file: the next call of
    // getNextSamples delivers the frame before that second and goes on behind the target; the call
    // after it repeats frames. A host that wants the exact frame there seeks to an earlier one and
    // drops what it does not want.
    virtual std::int32_t seek(std::uint64_t nanoseconds) = 0;
};

// What a decoder is to the host.
class SeekableFileDecoder : public AudioFileDecoder, public Seek {};

// A decoder class: static, never freed.
struct DecoderClass {
    const char* name;
    std::uint64_t (*getScoreByPath)(const std::string& path);  // never looks at the file
    std::unique_ptr<SeekableFileDecoder> (*make)();            // null when memory runs out
};

// The descriptor: entries in the order of insertion.
using PropertyValue = std::variant<std::string, std::uint32_t, std::vector<std::string>>;
using Properties = std::vector<std::pair<std::string, PropertyValue>>;

class PluginProtocol {
 public:
    virtual ~PluginProtocol() = default;

    // A new descriptor; null when memory runs out.
    virtual std::unique_ptr<Properties> getProperties() = 0;

    // The class that decodes the file, by what is inside it, never by its name; null when none
    // does or the file cannot be opened.
    virtual const DecoderClass* findDecoderClassByPath(const std::string& path) = 0;
};

}  // namespace atdp
