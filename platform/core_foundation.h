// The few core-foundation objects that the plug-in handles, each released once by whoever created
// it.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

struct OpaqueCFURL;
using CFTypeRef = const void*;  // any object of this header
using CFURLRef = const OpaqueCFURL*;
using CFAllocatorRef = const void*;

inline constexpr CFAllocatorRef kCFAllocatorDefault = nullptr;

// A URL for the path given as `length` bytes, which are taken as they are. Null when there is no
// path (no bytes, or a NUL among them) or no memory. The caller releases it with CFRelease.
CFURLRef CFURLCreateFromFileSystemRepresentation(CFAllocatorRef allocator,
                                                 const std::uint8_t* buffer, long length,
                                                 bool isDirectory);

// A dictionary from text to objects: text, or further dictionaries.
struct OpaqueCFDictionary;
using CFDictionaryRef = const OpaqueCFDictionary*;

// Looks a key up. On true `*value` is an object that lives as long as the dictionary does.
bool CFDictionaryGetValueIfPresent(CFDictionaryRef dictionary, std::string_view key,
                                   CFTypeRef* value);

// What an object holds, where it is text (UTF-8) or a dictionary; null where it is not. Both live
// as long as the object does.
const std::string* textOf(CFTypeRef object);
CFDictionaryRef dictionaryOf(CFTypeRef object);

// Releases an object that the caller owns; it must not be null.
void CFRelease(CFTypeRef object);

// Releases an owned object on every way out of a scope.
struct CFReleaser {
    void operator()(CFTypeRef object) const { CFRelease(object); }
};
using ScopedCFURL = std::unique_ptr<const OpaqueCFURL, CFReleaser>;
using ScopedCFDictionary = std::unique_ptr<const OpaqueCFDictionary, CFReleaser>;
