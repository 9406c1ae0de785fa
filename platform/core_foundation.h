// The few core-foundation objects that the plug-in handles, each released once by whoever created
// it.
#pragma once

#include <cstdint>
#include <memory>

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

// Releases an object that a Create call of this header returned; it must not be null.
void CFRelease(CFTypeRef object);

// Releases an owned object on every way out of a scope.
struct CFReleaser {
    void operator()(CFTypeRef object) const { CFRelease(object); }
};
using ScopedCFURL = std::unique_ptr<const OpaqueCFURL, CFReleaser>;
