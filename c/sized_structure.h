// Structures of C callers that start with their size, so that either side may know more fields.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstring>
#include <optional>

namespace atdp::c {

// Larger than any header will ever have one: beyond it `size` is garbage, and bytes behind the
// structure are not looked at.
inline constexpr std::size_t kLargestStructure = 4096;

// Whether a structure of that size can be: not smaller than the first header had it.
inline bool canBeStructure(std::size_t size, std::size_t firstSize) {
    return size >= firstSize && size <= kLargestStructure;
}

// What the caller gives, fields that it does not know being 0. Nothing when it is no such
// structure, or asks for something unknown here.
template <class Structure>
std::optional<Structure> structureFrom(const Structure* given, std::size_t firstSize) {
    std::size_t size = 0;
    std::memcpy(&size, given, sizeof size);
    if (!canBeStructure(size, firstSize)) return std::nullopt;
    const auto* const bytes = reinterpret_cast<const unsigned char*>(given);
    const std::size_t known = std::min(size, sizeof(Structure));
    if (std::any_of(bytes + known, bytes + size, [](unsigned char byte) { return byte != 0; }))
        return std::nullopt;
    Structure structure{};
    std::memcpy(&structure, given, known);
    return structure;
}

// Hands over as much of `structure` as the caller has room for, and 0 for the rest of the room.
// False when there is no such structure.
template <class Structure>
bool handOver(Structure structure, Structure* room, std::size_t firstSize) {
    std::size_t size = 0;
    std::memcpy(&size, room, sizeof size);
    if (!canBeStructure(size, firstSize)) return false;
    structure.size = size;
    const std::size_t known = std::min(size, sizeof(Structure));
    std::memcpy(room, &structure, known);
    std::memset(reinterpret_cast<unsigned char*>(room) + known, 0, size - known);
    return true;
}

}  // namespace atdp::c
