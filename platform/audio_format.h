// Audio-format services: questions about formats that need no open file.
#pragma once

#include <cstdint>

#include "platform/core_audio_types.h"
#include "platform/core_foundation.h"

// Specifier: the bytes of an ID3v2 tag (2.2 to 2.4). Value: a CFDictionaryRef, which the caller
// releases. Text frames stand under their identifiers; "comments" is a dictionary from each
// comment's description to a dictionary whose "text" is the comment.
inline constexpr std::uint32_t kAudioFormatProperty_ID3TagToDictionary = fourCharCode("id3d");

// Answers a property of what `specifier` holds. `*dataBytes` is the room at `data`, which must be
// the value's size. Any thread. kStatusDamagedFile when the bytes do not start with a whole tag,
// kStatusUnknownProperty for any other property.
OSStatus AudioFormatGetProperty(std::uint32_t property, std::uint32_t specifierBytes,
                                const void* specifier, std::uint32_t* dataBytes, void* data);
