// The decoder of linear PCM files, and the base of the other decoders.
#pragma once

#include <cstdint>
#include <cstdlib>
#include <memory>
#include <optional>
#include <string>

#include "decoder/protocols.h"
#include "platform/audio_file.h"
#include "platform/extended_audio_file.h"

namespace atdp {

// Frees a one-buffer list and its data block, both from the C allocator.
struct AudioBufferListFree {
    void operator()(AudioBufferList* list) const {
        std::free(list->mBuffers[0].mData);
        std::free(list);
    }
};

class AudioToolboxWavDecoder : public SeekableFileDecoder {
 public:
    AudioToolboxWavDecoder() = default;
    ~AudioToolboxWavDecoder() override;  // closes an open decoder
    AudioToolboxWavDecoder(const AudioToolboxWavDecoder&) = delete;
    AudioToolboxWavDecoder& operator=(const AudioToolboxWavDecoder&) = delete;

    static const DecoderClass& decoderClass();
    static std::uint64_t getScoreByPath(const std::string& path);  // 100 for any path

    std::int32_t openByPath(const std::string& path, const Options* options) override;
    void close() override;

    std::unique_ptr<MetadataList> getMetaData() override;
    std::uint64_t getDuration() override { return duration_; }
    std::uint32_t getPreferredBufferSize() override;  // frames of 20 milliseconds
    float getSamplingRate() override { return sampling_rate_; }
    std::int32_t getChannels() override { return channels_; }
    std::int32_t getBits() override { return 32; }
    std::int32_t getFormat() override;
    bool setSamplingRate(float rate) override;
    bool setChannels(std::int32_t channels) override;
    bool setBits(std::int32_t bits) override { return bits == 32; }
    std::int32_t getBitRate() override;

    std::int32_t getNextSamples(float* samples, std::uint32_t* size) override;
    std::int32_t getDummySamples(float* samples, std::uint32_t* size) override;
    std::uint64_t getTimestamp() override { return timestamp_; }
    std::int32_t getPrimingFrames() override { return primingFrames; }
    std::int32_t getRemainderFrames() override { return remainderFrames; }
    std::int32_t seek(std::uint64_t nanoseconds) override;

 protected:
    // Everything of opening but the buffer and the position. On failure what was obtained before
    // the failing step stays in file_id_ and file_ref_, for close to release.
    virtual std::int32_t openInternalByPath(const std::string& path, const Options* options);

    // Gives the reader a client format; false, with a log line, leaves the one in force.
    bool setClientDataFormat(const AudioStreamBasicDescription& format);

    void clearBuffer();
    virtual bool createBufferWrapper();  // 512 frames
    bool createBufferWithFrame(std::uint32_t frames, std::uint32_t bits, std::uint32_t channels);

    // Whether a request for samples can be served at all; where not, its count becomes 0.
    bool acceptsRequest(const float* samples, std::uint32_t* size) const;

    // Reads up to that many frames into the buffer and sets both of its counts, to 0 at the end of
    // data. A failure, DECODER_RESULT_READ_FAILED with a log line, leaves the counts alone.
    std::int32_t readIntoBuffer(std::uint32_t frames);

    // Moves the reader; false, with a log line, when it refuses. The buffer is left alone.
    bool moveReader(std::uint64_t frame);

    // Appends the file's own rate, channels and bits, in this order, where the list has no such key
    // yet. Throws std::bad_alloc.
    void addFileFormat(MetadataList& list) const;

    std::optional<std::string> filepath_;  // as given to the last open; bytes
    AudioFileID file_id_ = nullptr;        // keeps its value after close, as file_ref_ does
    ExtAudioFileRef file_ref_ = nullptr;   // while it is set, a new open is refused
    float sampling_rate_ = 0;              // Hz, of the samples delivered
    std::int32_t channels_ = 0;            // of the samples delivered
    std::int32_t bits_ = 0;                // per delivered sample: 32 once open
    std::uint64_t timestamp_ = 0;          // nanoseconds reached by the last delivery or seek
    std::int64_t num_frames_ = 0;          // length, frames; a comment in the file may say anything
    std::int32_t primingFrames = 0;        // encoder delay, frames
    std::int32_t remainderFrames = 0;      // padding, frames
    bool need_cut_ = false;                // the delay is this decoder's to cut, not the reader's
    std::uint64_t duration_ = 0;           // nanoseconds
    AudioStreamBasicDescription file_desc_{};  // the file's own format
    AudioStreamBasicDescription org_desc_{};   // the delivery format set at open
    AudioStreamBasicDescription desc_{};       // the delivery format now in force
    std::unique_ptr<AudioBufferList, AudioBufferListFree> p_abl_;  // what the reader fills
    std::uint32_t abl_remain_frames_ = 0;  // frames in the buffer not yet delivered
    std::uint32_t abl_num_frames_ = 0;     // frames that the last read put there
    std::uint64_t current_frame_ = 0;      // index of the next frame to deliver
    bool opened_ = false;

 private:
    bool openFile(const std::string& path);
    bool readLengthInFrames();
    void readGaplessCounts();
    bool readFileFormat();
    bool setDeliveryFormat();

    bool closed_ = true;  // the handles are not open, whatever values they still hold
};

}  // namespace atdp
