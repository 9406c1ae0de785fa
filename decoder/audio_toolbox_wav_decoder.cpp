#include "decoder/audio_toolbox_wav_decoder.h"

#include <algorithm>
#include <cstring>
#include <new>

#include "decoder/time_arithmetic.h"
#include "metadata/gapless_comment.h"
#include "metadata/id3_tag.h"
#include "metadata/information_dictionary.h"
#include "metadata/riff_info.h"
#include "platform/log.h"

namespace atdp {
namespace {

constexpr std::uint32_t kBufferFrames = 512;
constexpr std::uint32_t kBytesPerSample = sizeof(float);
constexpr double kPreferredBufferSeconds = 0.02;

// Reads a property whose size is known. Another size than that counts as failure, with the status
// that came with it.
template <class Reader, class Handle, class Value>
bool readProperty(Reader read, Handle handle, std::uint32_t property, Value* value,
                  OSStatus* status) {
    std::uint32_t bytes = sizeof(Value);
    *status = read(handle, property, &bytes, value);
    return *status == noErr && bytes == sizeof(Value);
}

bool isWaveFile(AudioFileID file) {
    std::uint32_t type = 0;
    std::uint32_t bytes = sizeof(type);
    return AudioFileGetProperty(file, kAudioFilePropertyFileFormat, &bytes, &type) == noErr &&
           type == kAudioFileWAVEType;
}

// Where memory runs out, what the source has added until then stays, and the next one has its turn.
template <class Source>
void gather(const Source& source) {
    try {
        source();
    } catch (const std::bad_alloc&) {
        return;
    }
}

}  // namespace

AudioToolboxWavDecoder::~AudioToolboxWavDecoder() {
    if (opened_) AudioToolboxWavDecoder::close();
}

const DecoderClass& AudioToolboxWavDecoder::decoderClass() {
    static constexpr DecoderClass kClass{
        "AudioToolboxWavDecoder", &AudioToolboxWavDecoder::getScoreByPath,
        []() -> std::unique_ptr<SeekableFileDecoder> {
            return std::unique_ptr<SeekableFileDecoder>(new (std::nothrow) AudioToolboxWavDecoder);
        }};
    return kClass;
}

std::uint64_t AudioToolboxWavDecoder::getScoreByPath(const std::string&) {
    return 100;
}

std::int32_t AudioToolboxWavDecoder::openByPath(const std::string& path, const Options* options) {
    const std::int32_t result = openInternalByPath(path, options);
    if (result != DECODER_RESULT_OK) return result;
    createBufferWrapper();  // without a buffer, delivery fails as a read does
    current_frame_ = 0;
    timestamp_ = 0;
    desc_ = org_desc_;
    opened_ = true;
    return DECODER_RESULT_OK;
}

std::int32_t AudioToolboxWavDecoder::openInternalByPath(const std::string& path, const Options*) {
    if (file_ref_ != nullptr) {
        NSLog("Already Opened.");
        return DECODER_RESULT_FAILED;
    }
    if (!openFile(path) || !readLengthInFrames()) return DECODER_RESULT_FAILED;
    readGaplessCounts();
    if (!readFileFormat() || !setDeliveryFormat()) return DECODER_RESULT_FAILED;

    sampling_rate_ = static_cast<float>(org_desc_.mSampleRate);
    channels_ = static_cast<std::int32_t>(org_desc_.mChannelsPerFrame);
    bits_ = static_cast<std::int32_t>(org_desc_.mBitsPerChannel);
    duration_ = nanosecondsFromFrames(static_cast<std::uint64_t>(num_frames_), sampling_rate_);
    return DECODER_RESULT_OK;
}

bool AudioToolboxWavDecoder::openFile(const std::string& path) {
    try {
        filepath_.reset();
        filepath_ = path;
    } catch (const std::bad_alloc&) {
        return false;
    }
    const ScopedCFURL url(CFURLCreateFromFileSystemRepresentation(
        kCFAllocatorDefault, reinterpret_cast<const std::uint8_t*>(path.c_str()),
        static_cast<long>(std::strlen(path.c_str())), false));
    if (!url) {
        NSLog("CFURLCreateFromFileSystemRepresentation failed.");
        return false;
    }
    if (!closed_) AudioFileClose(file_id_);  // left by an open that failed after this point
    closed_ = true;
    file_id_ = nullptr;
    OSStatus status = AudioFileOpenURL(url.get(), kAudioFileReadPermission, 0, &file_id_);
    if (status != noErr) {
        NSLog("url: %@", url.get());
        NSLog("AudioFileOpenURL failed.(%ld)", status);
        return false;
    }
    closed_ = false;
    status = ExtAudioFileWrapAudioFileID(file_id_, false, &file_ref_);
    if (status != noErr) NSLog("ExtAudioFileWrapAudioFileID failed.(0x%lX)", status);
    return status == noErr;
}

bool AudioToolboxWavDecoder::readLengthInFrames() {
    OSStatus status = noErr;
    if (readProperty(ExtAudioFileGetProperty, file_ref_, kExtAudioFileProperty_FileLengthFrames,
                     &num_frames_, &status))
        return true;
    NSLog("ExtAudioFileGetProperty (kExtAudioFileProperty_FileLengthFrames) failed.(0x%lX)",
          status);
    return false;
}

// Counts in the file's packet table are the reader's to cut: they are only reported here. Those
// that stand only in a comment of its tag are unknown to the reader.
void AudioToolboxWavDecoder::readGaplessCounts() {
    remainderFrames = 0;
    primingFrames = 0;
    AudioFileID file = nullptr;
    OSStatus status = noErr;
    if (!readProperty(ExtAudioFileGetProperty, file_ref_, kExtAudioFileProperty_AudioFile, &file,
                      &status)) {
        NSLog("ExtAudioFileGetProperty(file_ref_, kExtAudioFileProperty_AudioFile) failed.(0x%lX)",
              status);
        return;
    }
    AudioFilePacketTableInfo table{};
    if (readProperty(AudioFileGetProperty, file, kAudioFilePropertyPacketTableInfo, &table,
                     &status)) {
        primingFrames = table.mPrimingFrames;
        remainderFrames = table.mRemainderFrames;
    } else if (getAudioFilePacketTableInfoFromID3tag(&table, file)) {
        num_frames_ = table.mNumberValidFrames;
        primingFrames = table.mPrimingFrames;
        remainderFrames = table.mRemainderFrames;
        need_cut_ = true;
    }
}

bool AudioToolboxWavDecoder::readFileFormat() {
    OSStatus status = noErr;
    if (readProperty(ExtAudioFileGetProperty, file_ref_, kExtAudioFileProperty_FileDataFormat,
                     &file_desc_, &status))
        return true;
    NSLog("ExtAudioFileGetProperty (kExtAudioFileProperty_FileDataFormat) failed.(0x%lX)", status);
    return false;
}

// Interleaved 32-bit floats at the file's own rate and channel count.
bool AudioToolboxWavDecoder::setDeliveryFormat() {
    org_desc_ = file_desc_;
    org_desc_.mFormatID = kAudioFormatLinearPCM;
    org_desc_.mFormatFlags = kAudioFormatFlagIsFloat | kAudioFormatFlagIsPacked;
    org_desc_.mBytesPerPacket = kBytesPerSample * file_desc_.mChannelsPerFrame;
    org_desc_.mFramesPerPacket = 1;
    org_desc_.mBytesPerFrame = org_desc_.mBytesPerPacket;
    org_desc_.mBitsPerChannel = 8 * kBytesPerSample;
    return setClientDataFormat(org_desc_);
}

bool AudioToolboxWavDecoder::setClientDataFormat(const AudioStreamBasicDescription& format) {
    const OSStatus status = ExtAudioFileSetProperty(
        file_ref_, kExtAudioFileProperty_ClientDataFormat, sizeof(format), &format);
    if (status != noErr)
        NSLog("ExtAudioFileSetProperty (kExtAudioFileProperty_ClientDataFormat) failed.(0x%lX)",
              status);
    return status == noErr;
}

void AudioToolboxWavDecoder::close() {
    if (!closed_) {
        if (file_ref_ != nullptr) ExtAudioFileDispose(file_ref_);
        if (file_id_ != nullptr) AudioFileClose(file_id_);
        closed_ = true;
    }
    filepath_.reset();
    clearBuffer();
    opened_ = false;
}

std::uint32_t AudioToolboxWavDecoder::getPreferredBufferSize() {
    const std::uint64_t frames =
        truncatedToUint64(double{sampling_rate_} * kPreferredBufferSeconds);
    return static_cast<std::uint32_t>(frames);
}

std::int32_t AudioToolboxWavDecoder::getFormat() {
    return static_cast<std::int32_t>(kAudioFormatLinearPCM);
}

bool AudioToolboxWavDecoder::setSamplingRate(float rate) {
    if (!opened_) return false;
    AudioStreamBasicDescription format = desc_;
    format.mSampleRate = double{rate};
    if (!setClientDataFormat(format)) return false;
    sampling_rate_ = rate;
    desc_.mSampleRate = double{rate};
    seek(0);
    return true;
}

// Bytes per frame and per packet keep their old values: the reader goes by the channel count.
bool AudioToolboxWavDecoder::setChannels(std::int32_t channels) {
    if (!opened_) return false;
    AudioStreamBasicDescription format = desc_;
    format.mChannelsPerFrame = static_cast<std::uint32_t>(channels);
    if (!setClientDataFormat(format)) return false;
    channels_ = channels;
    desc_.mChannelsPerFrame = static_cast<std::uint32_t>(channels);
    // What is buffered in the old format is decoded again in the new one.
    if (abl_remain_frames_ > 0)
        ExtAudioFileSeek(file_ref_, static_cast<std::int64_t>(current_frame_));
    clearBuffer();
    createBufferWrapper();  // without a buffer, delivery fails as a read does
    return true;
}

std::int32_t AudioToolboxWavDecoder::getBitRate() {
    const std::uint32_t bytesPerSample = file_desc_.mBitsPerChannel >> 3;
    return truncatedToInt32(bytesPerSample *
                            (file_desc_.mChannelsPerFrame * file_desc_.mSampleRate));
}

std::unique_ptr<MetadataList> AudioToolboxWavDecoder::getMetaData() {
    if (!opened_) return nullptr;
    std::unique_ptr<MetadataList> list(new (std::nothrow) MetadataList);
    if (!list) return nullptr;
    if (isWaveFile(file_id_)) {
        gather([&] { checkID3v2Tag(file_id_, *list); });
        gather([&] { checkMetaDataAsWavFile(file_id_, *list); });
    }
    gather([&] { getAudioFilePropertyInfo(file_id_, *list); });
    gather([&] { addFileFormat(*list); });
    return list;
}

void AudioToolboxWavDecoder::addFileFormat(MetadataList& list) const {
    addIfMissing(list, METADATA_COMMON_KEY_SRC_SAMPLERATE,
                 static_cast<float>(file_desc_.mSampleRate));
    addIfMissing(list, kMetadataKeyChannels, std::int64_t{file_desc_.mChannelsPerFrame});
    addIfMissing(list, METADATA_COMMON_KEY_SRC_BITS, std::int64_t{file_desc_.mBitsPerChannel});
}

bool AudioToolboxWavDecoder::acceptsRequest(const float* samples, std::uint32_t* size) const {
    if (size == nullptr) return false;
    if (opened_ && desc_.mChannelsPerFrame > 0 && (samples != nullptr || *size == 0)) return true;
    *size = 0;
    return false;
}

std::int32_t AudioToolboxWavDecoder::getNextSamples(float* samples, std::uint32_t* size) {
    if (!acceptsRequest(samples, size)) return DECODER_RESULT_READ_FAILED;
    const std::uint32_t channels = desc_.mChannelsPerFrame;
    std::int32_t result = DECODER_RESULT_OK;
    std::uint32_t framesWanted = *size / channels;
    while (framesWanted > 0) {
        if (abl_remain_frames_ == 0) {
            result = readIntoBuffer(kBufferFrames);
            if (result != DECODER_RESULT_OK || abl_num_frames_ == 0) break;
        }
        const std::uint32_t frames = std::min(abl_remain_frames_, framesWanted);
        const std::size_t spent = abl_num_frames_ - abl_remain_frames_;
        const auto* buffered = static_cast<const float*>(p_abl_->mBuffers[0].mData);
        std::memcpy(samples, buffered + spent * channels,
                    std::size_t{frames} * channels * kBytesPerSample);
        samples += std::size_t{frames} * channels;
        abl_remain_frames_ -= frames;
        current_frame_ += frames;
        framesWanted -= frames;
    }
    timestamp_ = nanosecondsFromFrames(current_frame_, sampling_rate_);
    *size -= framesWanted * channels;
    return result;
}

// The list goes to the reader as the last read left it: after a short read its smaller byte size
// holds. Never are more frames taken from it than it has room for, whatever the reader says.
std::int32_t AudioToolboxWavDecoder::readIntoBuffer(std::uint32_t frames) {
    const bool hasRoom = p_abl_ && p_abl_->mBuffers[0].mData != nullptr;
    const std::uint32_t roomBytes = hasRoom ? p_abl_->mBuffers[0].mDataByteSize : 0;
    const OSStatus status = ExtAudioFileRead(file_ref_, &frames, p_abl_.get());
    if (status != noErr) {
        NSLog("ExtAudioFileRead() failed. (0x%08lX)", status);
        return DECODER_RESULT_READ_FAILED;
    }
    const std::uint64_t frameBytes = std::uint64_t{desc_.mChannelsPerFrame} * kBytesPerSample;
    if (frames * frameBytes > roomBytes)
        frames = static_cast<std::uint32_t>(roomBytes / frameBytes);
    abl_num_frames_ = frames;
    abl_remain_frames_ = frames;
    return DECODER_RESULT_OK;
}

std::int32_t AudioToolboxWavDecoder::getDummySamples(float* samples, std::uint32_t* size) {
    if (samples != nullptr && size != nullptr) std::fill_n(samples, *size, 0.0F);
    return DECODER_RESULT_OK;
}

std::int32_t AudioToolboxWavDecoder::seek(std::uint64_t nanoseconds) {
    if (!opened_) return DECODER_RESULT_FAILED;
    const std::uint64_t frame = framesFromNanoseconds(nanoseconds, sampling_rate_);
    if (!moveReader(frame)) return DECODER_RESULT_FAILED;
    timestamp_ = nanoseconds;
    current_frame_ = frame;
    abl_remain_frames_ = 0;
    abl_num_frames_ = 0;
    return DECODER_RESULT_OK;
}

// A frame from 2^63 on counts as negative, which the reader refuses.
bool AudioToolboxWavDecoder::moveReader(std::uint64_t frame) {
    const OSStatus status = ExtAudioFileSeek(file_ref_, static_cast<std::int64_t>(frame));
    if (status != noErr) NSLog("ExtAudioFileSeek Failed. (0x%08lX)", status);
    return status == noErr;
}

void AudioToolboxWavDecoder::clearBuffer() {
    p_abl_.reset();
    abl_remain_frames_ = 0;
    abl_num_frames_ = 0;
}

bool AudioToolboxWavDecoder::createBufferWrapper() {
    return createBufferWithFrame(kBufferFrames, static_cast<std::uint32_t>(bits_),
                                 static_cast<std::uint32_t>(channels_));
}

bool AudioToolboxWavDecoder::createBufferWithFrame(std::uint32_t frames, std::uint32_t bits,
                                                   std::uint32_t channels) {
    p_abl_.reset(static_cast<AudioBufferList*>(std::calloc(1, sizeof(AudioBufferList))));
    if (p_abl_) {
        AudioBuffer& buffer = p_abl_->mBuffers[0];
        p_abl_->mNumberBuffers = 1;
        buffer.mNumberChannels = channels;
        buffer.mDataByteSize = (bits >> 3) * frames * channels;
        buffer.mData = std::malloc(buffer.mDataByteSize);
    }
    if (!p_abl_ || p_abl_->mBuffers[0].mData == nullptr) {
        NSLog("AllocationFailed");
        return false;
    }
    abl_remain_frames_ = 0;
    abl_num_frames_ = 0;
    return true;
}

}  // namespace atdp
