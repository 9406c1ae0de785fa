// Audio-file services: a file opened for reading, and what it says of itself.
//
// A handle is checked at every call: a null, stale or foreign one answers
// kStatusInvalidParameter and is never dereferenced. One thread at a time per handle.
#pragma once

#include <cstdint>

#include "platform/core_audio_types.h"
#include "platform/core_foundation.h"

struct OpaqueAudioFileID;
using AudioFileID = OpaqueAudioFileID*;

inline constexpr std::int8_t kAudioFileReadPermission = 1;

// Properties. Those not listed here, or that a file does not have, answer
// kStatusUnknownProperty.
inline constexpr std::uint32_t kAudioFilePropertyFileFormat = fourCharCode("ffmt");  // uint32
inline constexpr std::uint32_t kAudioFilePropertyPacketTableInfo =
    fourCharCode("pnfo");  // AudioFilePacketTableInfo: what the reader cuts from this file
inline constexpr std::uint32_t kAudioFilePropertyID3Tag =
    fourCharCode("id3t");  // bytes: the ID3v2 tag at the start of an MPEG file
inline constexpr std::uint32_t kAudioFilePropertyInfoDictionary =
    fourCharCode("info");  // CFDictionaryRef, which the caller releases

// Opens the file for reading (`permissions` must be kAudioFileReadPermission). Its content alone
// decides what it is; the type hint is not used. On success `*file` is a handle that the caller
// closes with AudioFileClose; on failure it is left alone.
OSStatus AudioFileOpenURL(CFURLRef url, std::int8_t permissions, std::uint32_t fileTypeHint,
                          AudioFileID* file);
OSStatus AudioFileClose(AudioFileID file);

// Reads a property into `data`. `*dataBytes` is the room there, which must be the property's size,
// and on return the bytes written.
OSStatus AudioFileGetProperty(AudioFileID file, std::uint32_t property, std::uint32_t* dataBytes,
                              void* data);

// The size of a property in bytes, and whether it can be set, which none can. Both pointers may be
// null.
OSStatus AudioFileGetPropertyInfo(AudioFileID file, std::uint32_t property,
                                  std::uint32_t* dataBytes, std::uint32_t* isWritable);

// User data of a RIFF file: the bodies of its top-level chunks of one type ('LIST' or 'id3 '), in
// file order, numbered from 0. Only WAVE files have any.
OSStatus AudioFileCountUserData(AudioFileID file, std::uint32_t type, std::uint32_t* count);

// The size of an item in bytes; kStatusInvalidParameter when there is no such item.
OSStatus AudioFileGetUserDataSize(AudioFileID file, std::uint32_t type, std::uint32_t index,
                                  std::uint32_t* dataBytes);

// Reads an item. `*dataBytes` is the room at `data`, which must be the item's size.
OSStatus AudioFileGetUserData(AudioFileID file, std::uint32_t type, std::uint32_t index,
                              std::uint32_t* dataBytes, void* data);
