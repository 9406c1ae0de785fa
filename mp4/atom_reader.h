// A reader of the MPEG-4 atom tree that gathers what it finds in the m4a record.
//
// It is for small trees: a moov atom that does not fit into its buffer is left unread, and 64-bit
// sizes are unknown to it. Nothing is allocated. Damage only ends the walk early.
//
// The buffer, the address and the record are the process's: whoever calls iAnalizeM4aFile holds
// atomReaderLock until it is done with the record.
#pragma once

#include <cstdint>
#include <cstdio>
#include <mutex>
#include <string>

namespace atdp {

extern std::mutex atomReaderLock;

// The top-level atom being read: its header, and its body where it is ftyp or moov.
extern std::uint8_t bBuffer[0x40000];

// Where that atom starts in the file.
extern long dAddress;

// Clears the record, then fills it from the file. 0 when the file could be opened, whatever was
// found in it, else -1. `path` is bytes.
int iAnalizeM4aFile(const std::string& path);

// Reads the top-level atom at which the stream stands. 0 to go on, -1 to stop.
long lGetLevel0Block(std::FILE* stream);

// Walks the atoms of a region of at most bBuffer's size, and all that is in them. `owner` is the
// type of the atom that the region is the body of. Level and file offset tell a caller's debugger
// where the region stands; the walk needs neither. Always 0.
long lGetChildBlock(std::uint8_t level, unsigned long fileOffset, std::uint32_t length,
                    std::uint32_t owner, const std::uint8_t* region);

// Big-endian numbers; any alignment.
std::uint32_t dGet4bytes(const void* bytes);
std::uint16_t wGet2bytes(const void* bytes);

}  // namespace atdp
