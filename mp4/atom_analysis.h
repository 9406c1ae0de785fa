// What the atom walk does with each atom: count it, and copy what it holds into the m4a record.
// Called under atomReaderLock.
#pragma once

#include <cstdint>

namespace atdp {

// While a tree is walked, where it ends: an atom's fields are copied from their places up to there,
// whatever the atom says of its length. Null outside a walk, where the body's length is the end.
extern const std::uint8_t* treeEnd;

// Counts an atom of a known type, and makes the type the current one.
void vAnalizeAtomType(std::uint32_t type);

// Copies the fields of an atom of a known type. What lies behind the end is taken as zeros.
void vAnalizeAtomBody(std::uint32_t length, std::uint32_t type, const std::uint8_t* body);

// Where in the file the sample stands that starts at that time (in units of the media's time
// scale); -1 when none starts there, or the record does not reach that far. The sample's size is 0
// on failure; its number is left alone where there is none. Right only for files with one sample
// duration and one number of samples per chunk.
long lBitStreamPosition(std::uint32_t time, std::uint32_t* sample, std::uint32_t* sampleBytes);

}  // namespace atdp
