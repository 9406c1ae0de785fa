// The converting reader: frames of an audio file in the format that its client asks for.
//
// Handles are checked as those of audio_file.h are. One thread at a time per handle.
#pragma once

#include <cstdint>

#include "platform/audio_file.h"

struct OpaqueExtAudioFile;
using ExtAudioFileRef = OpaqueExtAudioFile*;

// Properties of a converting reader.
inline constexpr std::uint32_t kExtAudioFileProperty_FileDataFormat =
    fourCharCode("ffmt");  // AudioStreamBasicDescription
inline constexpr std::uint32_t kExtAudioFileProperty_FileLengthFrames =
    fourCharCode("#frm");  // int64: frames from the start to the end of data, at the file's rate
inline constexpr std::uint32_t kExtAudioFileProperty_AudioFile = fourCharCode("afil");
inline constexpr std::uint32_t kExtAudioFileProperty_ClientDataFormat =
    fourCharCode("cfmt");  // AudioStreamBasicDescription, may be set

// Opens a file and a reader over it; the reader owns the file.
OSStatus ExtAudioFileOpenURL(CFURLRef url, ExtAudioFileRef* reader);

// Makes a reader over a file that stays its opener's: the reader does not close the handle.
// `forWriting` must be false.
OSStatus ExtAudioFileWrapAudioFileID(AudioFileID file, bool forWriting, ExtAudioFileRef* reader);
OSStatus ExtAudioFileDispose(ExtAudioFileRef reader);

OSStatus ExtAudioFileGetProperty(ExtAudioFileRef reader, std::uint32_t property,
                                 std::uint32_t* dataBytes, void* data);

// Sets the client format, the only property that can be set: packed native 32-bit float linear
// PCM of 1 to 64 channels, at the file's own rate, or one from 1,000 to 768,000 Hz that is at most
// 1,024 times higher or lower. The frame size is 4 x channels whatever the byte fields say. Any
// other format answers kStatusUnsupportedFormat and leaves the reader as it was. The position stays
// at its time. The first frame delivered is at the time of the file's first, and of N frames of the
// file round(N x client rate / file rate) are delivered.
OSStatus ExtAudioFileSetProperty(ExtAudioFileRef reader, std::uint32_t property,
                                 std::uint32_t dataBytes, const void* data);

// Reads up to `*frames` frames in the client format, as many as the first buffer's byte size
// holds, and writes back how many; fewer only at the end of data, 0 past it. The buffer's byte
// size becomes the bytes written, but a read of 0 frames leaves the list as it was.
OSStatus ExtAudioFileRead(ExtAudioFileRef reader, std::uint32_t* frames, AudioBufferList* list);

// Moves to a frame, counted in the client format. Past the end succeeds, and the next read gives
// 0 frames; a negative frame answers kStatusInvalidSeek.
OSStatus ExtAudioFileSeek(ExtAudioFileRef reader, std::int64_t frame);
