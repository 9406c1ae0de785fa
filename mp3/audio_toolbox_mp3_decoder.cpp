#include "mp3/audio_toolbox_mp3_decoder.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <new>
#include <utility>

#include "decoder/time_arithmetic.h"
#include "metadata/information_dictionary.h"
#include "mp3/silence.h"
#include "mp3/threshold_option.h"
#include "platform/log.h"

namespace atdp {
namespace {

// A second of 64 channels at 768 kHz fits. More is no sound but a broken description.
constexpr std::uint64_t kGreatestEdgeSamples = std::uint64_t{1} << 26;

std::uint64_t saturatedSum(std::uint64_t a, std::uint64_t b) {
    return a + std::min(b, std::numeric_limits<std::uint64_t>::max() - a);
}

// As many frames as last as long at another rate, halves rounded up, 2^64 - 1 where they do not
// fit. From a rate that no sound has, the number stays as it is.
std::uint64_t framesAtRate(std::uint64_t frames, double rate, double otherRate) {
    if (rate == otherRate || !(rate > 0)) return frames;
    return truncatedToUint64(
        std::floor(static_cast<long double>(frames) * otherRate / rate + 0.5L));
}

}  // namespace

struct AudioToolboxMP3Decoder::Request {
    float* samples;
    std::uint64_t frames;
};

// The members of the same names. Of what is buffered only the place counts: a reader that comes
// back to it decodes the frames again.
struct AudioToolboxMP3Decoder::Delivery {
    AudioStreamBasicDescription desc_{};
    std::unique_ptr<AudioBufferList, AudioBufferListFree> p_abl_;
    std::uint64_t buffer_frame_ = 0;
    ProcessInfo start_process_info_;
    ProcessInfo end_process_info_;
};

const DecoderClass& AudioToolboxMP3Decoder::decoderClass() {
    static constexpr DecoderClass kClass{
        "AudioToolboxMP3Decoder", &AudioToolboxWavDecoder::getScoreByPath,
        []() -> std::unique_ptr<SeekableFileDecoder> {
            return std::unique_ptr<SeekableFileDecoder>(new (std::nothrow) AudioToolboxMP3Decoder);
        }};
    return kClass;
}

std::int32_t AudioToolboxMP3Decoder::openByPath(const std::string& path, const Options* options) {
    const std::int32_t result = openInternalByPath(path, options);
    if (result != DECODER_RESULT_OK) return result;
    mp3_threashold_db_ = silenceThreshold(options);
    processing_frame_size_ = file_desc_.mFramesPerPacket;
    desc_ = org_desc_;
    if (!makeEdgeRecords()) return DECODER_RESULT_FAILED;
    createBufferWrapper();  // without a buffer, reads fail
    current_frame_ = 0;
    timestamp_ = 0;
    opened_ = true;
    return initStartSequence();
}

bool AudioToolboxMP3Decoder::cutsSilenceAtStart() const {
    return primingFrames == 0 && mp3_threashold_db_ != 0;
}

bool AudioToolboxMP3Decoder::cutsSilenceAtEnd() const {
    return remainderFrames == 0 && mp3_threashold_db_ != 0;
}

std::int32_t AudioToolboxMP3Decoder::getPrimingFrames() {
    return cutsSilenceAtStart() ? framesOfFile(start_process_info_.border_frame_) : primingFrames;
}

std::int32_t AudioToolboxMP3Decoder::getRemainderFrames() {
    return cutsSilenceAtEnd() ? framesOfFile(end_process_info_.border_frame_) : remainderFrames;
}

std::uint64_t AudioToolboxMP3Decoder::framesDelivered(std::uint64_t fileFrames) const {
    return framesAtRate(fileFrames, file_desc_.mSampleRate, desc_.mSampleRate);
}

std::int32_t AudioToolboxMP3Decoder::framesOfFile(std::uint64_t frames) const {
    return static_cast<std::int32_t>(
        framesAtRate(frames, desc_.mSampleRate, file_desc_.mSampleRate));
}

// Frames of the file, none beyond its length, which may be any number where it comes from a
// comment: one that is negative counts as greater than every second, and the stream then lasts
// until the data ends.
std::uint64_t AudioToolboxMP3Decoder::framesToCut() const {
    if (!need_cut_ || primingFrames < 0) return 0;
    return std::min(static_cast<std::uint64_t>(primingFrames),
                    static_cast<std::uint64_t>(num_frames_));
}

// What is cut and what is kept are brought to the delivery rate apart, so that the number of frames
// kept does not hang on where the cut comes to lie between two frames. The data may end a frame
// earlier than that.
std::uint64_t AudioToolboxMP3Decoder::streamEnd() const {
    const std::uint64_t cut = framesToCut();
    return saturatedSum(framesDelivered(cut),
                        framesDelivered(static_cast<std::uint64_t>(num_frames_) - cut));
}

bool AudioToolboxMP3Decoder::makeEdgeRecords() {
    const std::uint64_t streamFrames = streamEnd();
    const std::uint64_t frames = std::min(truncatedToUint64(desc_.mSampleRate), streamFrames);
    const std::uint32_t channels = desc_.mChannelsPerFrame;
    start_process_info_.start_frame_ = 0;
    start_process_info_.end_frame_ = frames;
    end_process_info_.start_frame_ = std::max(streamFrames - frames, frames);
    end_process_info_.end_frame_ = streamFrames;
    try {
        if (frames > kGreatestEdgeSamples / std::max(channels, 1U)) throw std::bad_alloc();
        start_process_info_.samples_.resize(frames * channels);
        end_process_info_.samples_.resize(frames * channels);
        return true;
    } catch (const std::bad_alloc&) {
        NSLog("AllocationFailed");
        return false;
    }
}

bool AudioToolboxMP3Decoder::createBufferWrapper() {
    return createBufferWithFrame(static_cast<std::uint32_t>(processing_frame_size_),
                                 static_cast<std::uint32_t>(bits_),
                                 static_cast<std::uint32_t>(channels_));
}

std::uint32_t AudioToolboxMP3Decoder::getPreferredBufferSize() {
    return static_cast<std::uint32_t>(processing_frame_size_);
}

std::int32_t AudioToolboxMP3Decoder::decodeAndUpdateBuffer() {
    return readIntoBuffer(static_cast<std::uint32_t>(processing_frame_size_));
}

const float* AudioToolboxMP3Decoder::bufferedSamples() const {
    const std::size_t spent = abl_num_frames_ - abl_remain_frames_;
    const auto* samples = static_cast<const float*>(p_abl_->mBuffers[0].mData);
    return samples + spent * desc_.mChannelsPerFrame;
}

void AudioToolboxMP3Decoder::takeFromBuffer(std::uint64_t frames) {
    abl_remain_frames_ -= static_cast<std::uint32_t>(frames);
    buffer_frame_ += frames;
}

// Takes decoded frames into the record until it is full or the data ends, and drops those that lie
// before it. After a failed read a new call goes on where that one stopped.
std::int32_t AudioToolboxMP3Decoder::collect(ProcessInfo* record) {
    const std::uint32_t channels = desc_.mChannelsPerFrame;
    while (buffer_frame_ < record->end_frame_ && record->start_frame_ < record->end_frame_) {
        if (abl_remain_frames_ == 0) {
            const std::int32_t result = decodeAndUpdateBuffer();
            if (result != DECODER_RESULT_OK) return result;
            if (abl_num_frames_ == 0) break;
        }
        const bool before = buffer_frame_ < record->start_frame_;
        const std::uint64_t boundary = before ? record->start_frame_ : record->end_frame_;
        const std::uint64_t frames =
            std::min<std::uint64_t>(abl_remain_frames_, boundary - buffer_frame_);
        if (!before)
            std::copy_n(
                bufferedSamples(), frames * channels,
                record->samples_.data() + (buffer_frame_ - record->start_frame_) * channels);
        takeFromBuffer(frames);
    }
    return DECODER_RESULT_OK;
}

std::int32_t AudioToolboxMP3Decoder::initStartSequence() {
    ProcessInfo& start = start_process_info_;
    const std::int32_t result = collect(&start);
    if (result != DECODER_RESULT_OK) return result;
    if (cutsSilenceAtStart()) {
        start.border_frame_ =
            silentFramesAtStart(start.samples_.data(), start.end_frame_, desc_.mChannelsPerFrame,
                                silenceLevel(mp3_threashold_db_));
    } else if (need_cut_) {
        // A count beyond the record, or a negative one, cuts the whole record and no more.
        start.border_frame_ = start.end_frame_;
        if (primingFrames >= 0)
            start.border_frame_ = std::min(framesDelivered(framesToCut()), start.end_frame_);
    }
    start.ready_ = true;
    return DECODER_RESULT_OK;
}

// Hosts rely on two oddities of the scan for silence. It starts at the end of the record's room of
// a whole second, so where the record covers less it meets the zeros there first. And the remainder
// that is reported afterwards is the number of frames kept, not the number cut.
std::int32_t AudioToolboxMP3Decoder::initEndSequence() {
    ProcessInfo& end = end_process_info_;
    const std::int32_t result = collect(&end);
    if (result != DECODER_RESULT_OK) return result;
    const std::uint64_t frames = end.end_frame_ - end.start_frame_;
    if (!cutsSilenceAtEnd()) {
        end.border_frame_ = buffer_frame_ - std::min(buffer_frame_, end.start_frame_);
        end.border_frame_ = std::min(end.border_frame_, frames);
    } else {
        const std::uint64_t roomFrames = start_process_info_.end_frame_;
        const std::uint32_t channels = desc_.mChannelsPerFrame;
        const float* last = end.samples_.data() + (roomFrames - frames) * channels;
        end.border_frame_ =
            frames - silentFramesAtEnd(last, frames, channels, silenceLevel(mp3_threashold_db_));
    }
    end.ready_ = true;
    return DECODER_RESULT_OK;
}

std::int32_t AudioToolboxMP3Decoder::getNextSamples(float* samples, std::uint32_t* size) {
    if (!acceptsRequest(samples, size)) return DECODER_RESULT_READ_FAILED;
    const std::uint32_t channels = desc_.mChannelsPerFrame;
    Request request{samples, *size / channels};
    std::int32_t result = DECODER_RESULT_OK;
    if (!decoded_) {
        deliverStart(&request);
        result = deliverMiddle(&request);
        if (result == DECODER_RESULT_OK && !decoded_) result = deliverEnd(&request);
    }
    seek_end_remain_frames_ = 0;
    timestamp_ = nanosecondsFromFrames(virtual_current_frame_, sampling_rate_);
    *size -= static_cast<std::uint32_t>(request.frames) * channels;
    return result;
}

void AudioToolboxMP3Decoder::deliver(const float* source, std::uint64_t frames, Request* request) {
    const std::uint64_t samples = frames * desc_.mChannelsPerFrame;
    if (samples == 2) {  // one frame of stereo, without a call
        request->samples[0] = source[0];
        request->samples[1] = source[1];
    } else if (samples > 0) {
        std::copy_n(source, samples, request->samples);
    }
    request->samples += samples;
    request->frames -= frames;
    current_frame_ += frames;
    virtual_current_frame_ += frames;
}

void AudioToolboxMP3Decoder::deliverStart(Request* request) {
    const ProcessInfo& start = start_process_info_;
    if (current_frame_ >= start.end_frame_) return;
    current_frame_ = std::max(current_frame_, start.border_frame_);
    const std::uint64_t frames = std::min(start.end_frame_ - current_frame_, request->frames);
    deliver(start.samples_.data() + current_frame_ * desc_.mChannelsPerFrame, frames, request);
}

// Up to the end record.
std::int32_t AudioToolboxMP3Decoder::deliverMiddle(Request* request) {
    while (request->frames > 0 && current_frame_ < end_process_info_.start_frame_) {
        if (abl_remain_frames_ == 0) {
            const std::int32_t result = decodeAndUpdateBuffer();
            if (result != DECODER_RESULT_OK) return result;
            decoded_ = abl_num_frames_ == 0;
            if (decoded_) break;
        }
        const std::uint64_t frames = std::min({std::uint64_t{abl_remain_frames_}, request->frames,
                                               end_process_info_.start_frame_ - current_frame_});
        deliver(bufferedSamples(), frames, request);
        takeFromBuffer(frames);
    }
    return DECODER_RESULT_OK;
}

// The position moves by what is delivered, not by what a seek left out: the call after this one
// repeats frames of the record, as hosts expect.
std::int32_t AudioToolboxMP3Decoder::deliverEnd(Request* request) {
    if (request->frames == 0) return DECODER_RESULT_OK;
    const ProcessInfo& end = end_process_info_;
    if (!end.ready_) {
        const std::int32_t result = initEndSequence();
        if (result != DECODER_RESULT_OK) return result;
    }
    const std::uint64_t played = current_frame_ - end.start_frame_;
    if (played >= end.border_frame_ || seek_end_remain_frames_ >= end.border_frame_ - played)
        return DECODER_RESULT_OK;
    const std::uint64_t from = played + seek_end_remain_frames_;
    deliver(end.samples_.data() + from * desc_.mChannelsPerFrame,
            std::min(request->frames, end.border_frame_ - from), request);
    return DECODER_RESULT_OK;
}

// A time in the last second goes to the frame before the end record; the call after the seek then
// delivers that frame and goes on in the record behind the target.
std::int32_t AudioToolboxMP3Decoder::seek(std::uint64_t nanoseconds) {
    if (!opened_) return DECODER_RESULT_FAILED;
    const std::uint64_t frame = framesFromNanoseconds(nanoseconds, sampling_rate_);
    const std::uint64_t border = start_process_info_.border_frame_;
    const std::uint64_t lastSecond = end_process_info_.start_frame_;
    const std::uint64_t target = saturatedSum(border, frame);
    std::uint64_t position = target;
    if (target >= lastSecond) {
        seek_end_remain_frames_ = target + 1 - lastSecond;
        position = lastSecond - 1;  // which an empty stream has not: the reader refuses
    }
    // What lies in the start record is served from there.
    const bool inStart = target < start_process_info_.end_frame_;
    if (!placeReader(inStart ? start_process_info_.end_frame_ : position))
        return DECODER_RESULT_FAILED;
    timestamp_ = nanoseconds;
    current_frame_ = position;
    virtual_current_frame_ = frame;
    decoded_ = false;
    return DECODER_RESULT_OK;
}

// What was buffered is dropped, but not where the reader refuses.
bool AudioToolboxMP3Decoder::placeReader(std::uint64_t frame) {
    if (!moveReader(frame)) return false;
    buffer_frame_ = frame;
    abl_num_frames_ = 0;
    abl_remain_frames_ = 0;
    return true;
}

// A decoder without a buffer has lost its reader's format in a change that failed.
bool AudioToolboxMP3Decoder::setSamplingRate(float rate) {
    if (!opened_) return false;
    if (rate == sampling_rate_ && p_abl_) {
        seek(0);
        return true;
    }
    AudioStreamBasicDescription format = desc_;
    format.mSampleRate = double{rate};
    if (!changeFormat(format, 0)) return false;
    timestamp_ = 0;
    current_frame_ = 0;
    virtual_current_frame_ = 0;
    seek_end_remain_frames_ = 0;
    decoded_ = false;
    return true;
}

// Bytes per frame and per packet keep their old values: the reader goes by the channel count.
bool AudioToolboxMP3Decoder::setChannels(std::int32_t channels) {
    if (!opened_) return false;
    if (channels == channels_ && p_abl_) return true;
    AudioStreamBasicDescription format = desc_;
    format.mChannelsPerFrame = static_cast<std::uint32_t>(channels);
    return changeFormat(format, current_frame_);
}

// Everything is made anew beside the old, which comes back where a step fails. Where the reader
// refuses to go back, the decoder is left without a buffer: what is not held in memory then fails
// as a read does.
bool AudioToolboxMP3Decoder::changeFormat(const AudioStreamBasicDescription& format,
                                          std::uint64_t position) {
    if (!setClientDataFormat(format)) return false;
    Delivery other;
    other.desc_ = format;
    exchangeDelivery(&other);
    if (makeEdgeRecords() && createBufferWrapper() && placeReader(0) &&
        initStartSequence() == DECODER_RESULT_OK && goOnFrom(position))
        return true;
    exchangeDelivery(&other);
    if (!setClientDataFormat(desc_) || !placeReader(buffer_frame_)) clearBuffer();
    return false;
}

void AudioToolboxMP3Decoder::exchangeDelivery(Delivery* other) {
    std::swap(desc_, other->desc_);
    std::swap(p_abl_, other->p_abl_);
    std::swap(buffer_frame_, other->buffer_frame_);
    std::swap(start_process_info_, other->start_process_info_);
    std::swap(end_process_info_, other->end_process_info_);
    sampling_rate_ = static_cast<float>(desc_.mSampleRate);
    channels_ = static_cast<std::int32_t>(desc_.mChannelsPerFrame);
}

// Follows the making of the start record, which leaves the reader behind it. In the last second the
// end record is collected at once, so that it can still fail the change.
bool AudioToolboxMP3Decoder::goOnFrom(std::uint64_t position) {
    const std::uint64_t readerFrame = std::min(position, end_process_info_.start_frame_);
    if (readerFrame > start_process_info_.end_frame_ && !placeReader(readerFrame)) return false;
    const bool inEnd = position >= end_process_info_.start_frame_;
    return !inEnd || initEndSequence() == DECODER_RESULT_OK;
}

std::unique_ptr<MetadataList> AudioToolboxMP3Decoder::getMetaData() {
    if (!opened_) return nullptr;
    try {
        auto list = std::make_unique<MetadataList>();
        addFileFormat(*list);
        getAudioFilePropertyInfo(file_id_, *list);
        return list;
    } catch (const std::bad_alloc&) {
        return nullptr;
    }
}

}  // namespace atdp
