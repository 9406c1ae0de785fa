// Records and codes of the audio services, under their published names.
#pragma once

#include <cstdint>

using OSStatus = std::int32_t;  // 0 is success; every other value names a failure
inline constexpr OSStatus noErr = 0;

// A four-character code as a number: the first character is the most significant byte.
constexpr std::uint32_t fourCharCode(const char (&text)[5]) {
    return std::uint32_t{static_cast<unsigned char>(text[0])} << 24 |
           std::uint32_t{static_cast<unsigned char>(text[1])} << 16 |
           std::uint32_t{static_cast<unsigned char>(text[2])} << 8 |
           std::uint32_t{static_cast<unsigned char>(text[3])};
}

// Type codes of files (kAudioFilePropertyFileFormat).
inline constexpr std::uint32_t kAudioFileWAVEType = fourCharCode("WAVE");
inline constexpr std::uint32_t kAudioFileRF64Type = fourCharCode("RF64");
inline constexpr std::uint32_t kAudioFileAIFFType = fourCharCode("AIFF");
inline constexpr std::uint32_t kAudioFileAIFCType = fourCharCode("AIFC");
inline constexpr std::uint32_t kAudioFileWave64Type = fourCharCode("W64f");
inline constexpr std::uint32_t kAudioFileCAFType = fourCharCode("caff");
inline constexpr std::uint32_t kAudioFileNextType = fourCharCode("NeXT");
inline constexpr std::uint32_t kAudioFileMP1Type = fourCharCode("MPG1");
inline constexpr std::uint32_t kAudioFileMP2Type = fourCharCode("MPG2");
inline constexpr std::uint32_t kAudioFileMP3Type = fourCharCode("MPG3");
inline constexpr std::uint32_t kAudioFileM4AType = fourCharCode("m4af");
inline constexpr std::uint32_t kAudioFileMPEG4Type = fourCharCode("mp4f");

// Values of mFormatID.
inline constexpr std::uint32_t kAudioFormatLinearPCM = fourCharCode("lpcm");
inline constexpr std::uint32_t kAudioFormatAppleLossless = fourCharCode("alac");
inline constexpr std::uint32_t kAudioFormatMPEG4AAC = fourCharCode("aac ");
inline constexpr std::uint32_t kAudioFormatMPEGLayer1 = fourCharCode(".mp1");
inline constexpr std::uint32_t kAudioFormatMPEGLayer2 = fourCharCode(".mp2");
inline constexpr std::uint32_t kAudioFormatMPEGLayer3 = fourCharCode(".mp3");
inline constexpr std::uint32_t kAudioFormatULaw = fourCharCode("ulaw");
inline constexpr std::uint32_t kAudioFormatALaw = fourCharCode("alaw");

// Bits of mFormatFlags for linear PCM.
inline constexpr std::uint32_t kAudioFormatFlagIsFloat = 1;
inline constexpr std::uint32_t kAudioFormatFlagIsBigEndian = 2;
inline constexpr std::uint32_t kAudioFormatFlagIsSignedInteger = 4;
inline constexpr std::uint32_t kAudioFormatFlagIsPacked = 8;
inline constexpr std::uint32_t kAudioFormatFlagIsAlignedHigh = 16;

// Values of mFormatFlags for Apple Lossless: the bits of the sound that was encoded.
inline constexpr std::uint32_t kAppleLosslessFormatFlag_16BitSourceData = 1;
inline constexpr std::uint32_t kAppleLosslessFormatFlag_20BitSourceData = 2;
inline constexpr std::uint32_t kAppleLosslessFormatFlag_24BitSourceData = 3;
inline constexpr std::uint32_t kAppleLosslessFormatFlag_32BitSourceData = 4;

// What a run of sound data looks like. A field that a format leaves open is 0.
struct AudioStreamBasicDescription {
    double mSampleRate;  // Hz
    std::uint32_t mFormatID;
    std::uint32_t mFormatFlags;
    std::uint32_t mBytesPerPacket;
    std::uint32_t mFramesPerPacket;
    std::uint32_t mBytesPerFrame;
    std::uint32_t mChannelsPerFrame;
    std::uint32_t mBitsPerChannel;
    std::uint32_t mReserved;
};
static_assert(sizeof(AudioStreamBasicDescription) == 40);

struct AudioBuffer {
    std::uint32_t mNumberChannels;
    std::uint32_t mDataByteSize;  // bytes at mData: room before a read, bytes written after it
    void* mData;
};

// A list of buffers; the record holds the first, which is all that interleaved sound needs.
struct AudioBufferList {
    std::uint32_t mNumberBuffers;
    AudioBuffer mBuffers[1];
};

// Gapless counts of a file, in frames at the file's rate.
struct AudioFilePacketTableInfo {
    std::int64_t mNumberValidFrames;
    std::int32_t mPrimingFrames;
    std::int32_t mRemainderFrames;
};
static_assert(sizeof(AudioFilePacketTableInfo) == 16);

// Statuses that the audio services answer.
inline constexpr OSStatus kStatusIoError = -36;  // not a regular file, or unreadable
inline constexpr OSStatus kStatusFileNotFound = -43;
inline constexpr OSStatus kStatusInvalidParameter = -50;  // a null, stale or foreign handle too
inline constexpr OSStatus kStatusNotPermitted = -54;
inline constexpr OSStatus kStatusOutOfMemory = -108;
inline constexpr OSStatus kStatusInvalidSeek = -66568;  // a frame before the first
inline constexpr OSStatus kStatusUnknownFileType = fourCharCode("typ?");
inline constexpr OSStatus kStatusDamagedFile = fourCharCode("dta?");
inline constexpr OSStatus kStatusUnknownProperty = fourCharCode("pty?");
inline constexpr OSStatus kStatusWrongPropertySize = fourCharCode("!siz");
inline constexpr OSStatus kStatusUnsupportedFormat = fourCharCode("fmt?");
