// The decoder of MPEG audio, layers I to III. It cuts what an encoder added at both ends and, on
// request, silence there.
//
// The first and the last second of the stream are held in memory; what lies between comes from the
// reader as it is asked for. The stream that is delivered runs from the start record's border to
// the end record's.
#pragma once

#include "decoder/audio_toolbox_wav_decoder.h"
#include "mp3/process_info.h"

namespace atdp {

class AudioToolboxMP3Decoder final : public AudioToolboxWavDecoder {
 public:
    static const DecoderClass& decoderClass();

    // Decodes the first second. With DECODER_RESULT_READ_FAILED the file stays open, to be closed.
    std::int32_t openByPath(const std::string& path, const Options* options) override;

    std::unique_ptr<MetadataList> getMetaData() override;
    std::uint32_t getPreferredBufferSize() override;  // frames of one packet

    // A change decodes the first second again. Where that fails, or the reader or memory refuses
    // the new format, the answer is false, and delivery goes on in the old one where it was (but if
    // the reader cannot even go back to that, reads fail until a change succeeds, also one to the
    // values in force). A new rate goes to the start; a new channel count keeps the position.
    bool setSamplingRate(float rate) override;
    bool setChannels(std::int32_t channels) override;

    // In frames of the file, whatever the rate delivered. A count that the file gives stays as it
    // is. Where silence is cut instead, they tell of what the scan found: the frames cut at the
    // start; and at the end, from the time that delivery reaches the last second in the present
    // format, those kept of it.
    std::int32_t getPrimingFrames() override;
    std::int32_t getRemainderFrames() override;

    std::int32_t getNextSamples(float* samples, std::uint32_t* size) override;
    std::int32_t seek(std::uint64_t nanoseconds) override;

 protected:
    bool createBufferWrapper() override;  // processing_frame_size_ frames

 private:
    struct Request;   // what is still to be delivered, and where to
    struct Delivery;  // what the delivery format determines

    bool changeFormat(const AudioStreamBasicDescription& format, std::uint64_t position);
    void exchangeDelivery(Delivery* other);
    bool goOnFrom(std::uint64_t position);
    bool placeReader(std::uint64_t frame);

    bool cutsSilenceAtStart() const;
    bool cutsSilenceAtEnd() const;
    std::uint64_t framesDelivered(std::uint64_t fileFrames) const;
    std::int32_t framesOfFile(std::uint64_t frames) const;
    std::uint64_t framesToCut() const;
    std::uint64_t streamEnd() const;

    bool makeEdgeRecords();
    std::int32_t initStartSequence();
    std::int32_t initEndSequence();
    std::int32_t collect(ProcessInfo* record);
    std::int32_t decodeAndUpdateBuffer();
    const float* bufferedSamples() const;
    void takeFromBuffer(std::uint64_t frames);

    void deliver(const float* source, std::uint64_t frames, Request* request);
    void deliverStart(Request* request);
    std::int32_t deliverMiddle(Request* request);
    std::int32_t deliverEnd(Request* request);

    float mp3_threashold_db_ = 0;               // silence threshold; 0: silence is not cut
    std::uint64_t virtual_current_frame_ = 0;   // position in the delivered stream
    std::uint64_t processing_frame_size_ = 0;   // frames asked of the reader at a time
    ProcessInfo start_process_info_;            // the first second
    ProcessInfo end_process_info_;              // the last second
    std::uint64_t seek_end_remain_frames_ = 0;  // frames of the end record the next call leaves out
    bool decoded_ = false;                      // the data ended before the end record
    std::uint64_t buffer_frame_ = 0;            // index of the next frame of buffer and reader
};

}  // namespace atdp
