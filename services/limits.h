// Bounds on what a file may claim and a client may ask for.
#pragma once

#include <cstddef>
#include <cstdint>

namespace atdp::services {

// Channels of a file or a client. No format played here has more, and a frame of that many floats
// still fits any buffer in use.
inline constexpr std::uint32_t kMaxChannels = 64;

// Rates that a file may state, in Hz: what a 32-bit field of WAVE can hold.
inline constexpr double kMinFileRate = 1.0;
inline constexpr double kMaxFileRate = 4'294'967'295.0;

// Rates that a client may ask for, in Hz, and how many times higher or lower than the file's they
// may be: far more than any sound needs, and little enough that a file, which may state any rate,
// cannot make the first frame after a seek cost seconds.
inline constexpr double kMinClientRate = 1'000.0;
inline constexpr double kMaxClientRate = 768'000.0;
inline constexpr double kMaxRateRatio = 1'024.0;

// Bytes read from a file at a time while it plays: large enough that the calls cost little beside
// the copying, small enough to stay in the processor's second-level cache.
inline constexpr std::size_t kReadBlockBytes = 64 * 1024;

// Bytes read at first behind a seek, which is often followed by another: some packets of most
// kinds.
inline constexpr std::size_t kBytesAfterSeek = 2 * 1024;

// Bytes read at a time while a container's headers are looked at.
inline constexpr std::size_t kHeaderBlockBytes = 4 * 1024;

// Chunks of one file that are looked at: far beyond any real file, and few enough that a file of
// nothing but empty chunks is dealt with at once.
inline constexpr std::size_t kMaxChunks = 65'536;

// Bytes read at a time while the start of a stream is searched for: room for kScanAheadBytes and as
// much to search.
inline constexpr std::size_t kScanBlockBytes = 64 * 1024;

// Bytes read at a time while a whole stream is walked over.
inline constexpr std::size_t kWalkBlockBytes = 64 * 1024;

// Bytes in front of MPEG audio that are searched for its start. Broken downloads have a page of
// text or a torn tag there; a file without a packet in its first megabyte is something else.
inline constexpr std::uint64_t kMaxLeadingJunkBytes = 1024 * 1024;

// The smallest packet that a table may state for all packets at once, and that packets have on
// average. No packet with sound in it is smaller, and so a table cannot take more memory, or make
// more silence, than the sound's bytes are worth.
inline constexpr std::uint32_t kMinCommonPacketBytes = 8;

// Packets of one stream: 121 hours of MPEG audio at 44.1 kHz, in 128 MB of memory. A hostile file
// can hold packets of a few bytes each.
inline constexpr std::uint64_t kMaxPackets = 16 * 1024 * 1024;

// Packets of free-format MPEG audio: the largest is what libmpg123 takes, more than the largest
// that a stated bit rate gives, 2,880 bytes; the smallest has some bytes of sound behind the
// longest side information.
inline constexpr std::uint32_t kMinFreeFormatBytes = 54;
inline constexpr std::uint32_t kMaxFreeFormatBytes = 3'456;

// Bytes kept at hand behind a place that may be a frame, so that the frames which must follow it
// are looked at without reading back and forth.
inline constexpr std::size_t kScanAheadBytes = 3 * kMaxFreeFormatBytes;

// Pairs of free-format headers that are tried as neighbours before the search gives up on them: a
// real stream fits at once, a hostile file could hold millions.
inline constexpr int kMaxFreeFormatTries = 1000;

// Channels of Apple Lossless: what its layouts go up to.
inline constexpr std::uint32_t kMaxAlacChannels = 8;

// Frames of a packet of Apple Lossless: 16 times what encoders use, and few enough that the buffers
// of a decoder stay small and a hostile packet is over at once.
inline constexpr std::uint32_t kMaxAlacFrames = 65'536;

// Bytes of a tag that are looked at. Large covers make tags large, and text that follows more than
// this is not found; a file that claims to be all tag is not read into memory.
inline constexpr std::size_t kMaxTagBytes = 16 * 1024 * 1024;

// Bytes of text taken from one entry of a tag and from all of them, and entries looked at: far more
// than any screen shows, and few enough that what is made of them stays small beside the player,
// and that text parsing whose time grows with the square of the length is over at once.
inline constexpr std::size_t kMaxTagEntryBytes = 8 * 1024;
inline constexpr std::size_t kMaxTagTextBytes = 1024 * 1024;
inline constexpr std::size_t kMaxTagEntries = 1024;
inline constexpr std::size_t kMaxGenreBytes = 1024;

// Chunks of tags of one file that are looked at. Clients ask for them one by one.
inline constexpr std::size_t kMaxTagChunks = 4096;

// Tags that follow each other at the start or the end of a file; more than a few are a damaged
// file.
inline constexpr std::size_t kMaxTagsInARow = 16;

}  // namespace atdp::services
