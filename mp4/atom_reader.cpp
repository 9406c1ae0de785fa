#include "mp4/atom_reader.h"

#include <algorithm>
#include <cstring>
#include <memory>

#include "mp4/atom_analysis.h"
#include "mp4/m4a_record.h"
#include "platform/core_audio_types.h"

namespace atdp {

std::mutex atomReaderLock;
std::uint8_t bBuffer[0x40000];
long dAddress = 0;

namespace {

constexpr std::uint32_t kHeaderBytes = 8;
constexpr std::uint32_t kMeta = fourCharCode("meta");

// Atoms whose children are walked. The items of a tag list are among them, so that their data atoms
// are read while the item's type is the current one.
constexpr std::uint32_t kContainers[] = {
    fourCharCode("trak"),    fourCharCode("mdia"),    fourCharCode("minf"),
    fourCharCode("dinf"),    fourCharCode("stbl"),    fourCharCode("udta"),
    fourCharCode("meta"),    fourCharCode("ilst"),    fourCharCode("----"),
    fourCharCode("covr"),    fourCharCode("cpil"),    fourCharCode("disk"),
    fourCharCode("gnre"),    fourCharCode("pgap"),    fourCharCode("trkn"),
    fourCharCode("\251nam"), fourCharCode("\251ART"), fourCharCode("\251alb"),
    fourCharCode("\251day"), fourCharCode("\251too"), fourCharCode("\251wrt"),
};

struct FileCloser {
    void operator()(std::FILE* file) const { std::fclose(file); }
};

struct Region {
    const std::uint8_t* bytes;
    std::uint32_t length;

    const std::uint8_t* at(std::uint32_t offset) const { return bytes + std::min(offset, length); }

    // Past the region's end there are zeros.
    std::uint32_t word(std::uint32_t offset) const {
        std::uint8_t found[4] = {};
        if (offset < length)
            std::memcpy(found, bytes + offset,
                        std::min<std::size_t>(sizeof(found), length - offset));
        return dGet4bytes(found);
    }
};

// A container that the walk is in.
struct Level {
    std::uint32_t cursor;     // from the start of the whole region
    std::uint32_t remaining;  // bytes from the cursor on that count as the container's
    std::uint32_t lastType;   // of the atom before the cursor; before the first, the container's
};

// Every level starts at least a header behind the one that it is in.
Level levels[sizeof(bBuffer) / kHeaderBytes];

struct Atom {
    std::uint32_t type;
    std::uint32_t size;  // header and body, no more than its container had left
    std::uint32_t body;  // where it starts in the whole region
};

// Two oddities here shape what is found, and are kept. The version and flags of a meta atom are
// stepped over only where they are zero, and without taking them off what remains, so that the walk
// of a meta atom goes on behind its end. And since the type to compare is that of the atom before,
// the same is done with a size of zero that follows a meta atom.
Atom takeAtom(const Region& region, Level& level) {
    std::uint32_t size = region.word(level.cursor);
    if (level.lastType == kMeta && size == 0) {
        level.cursor += 4;
        size = region.word(level.cursor);
    }
    const std::uint32_t type = region.word(level.cursor + 4);
    if (size == 0) size = level.remaining;
    size = std::min(size, level.remaining);
    const Atom atom{type, size, level.cursor + kHeaderBytes};
    level.cursor += size;
    level.remaining -= size;
    level.lastType = type;
    return atom;
}

bool isContainer(std::uint32_t type) {
    return std::find(std::begin(kContainers), std::end(kContainers), type) != std::end(kContainers);
}

bool readBody(std::FILE* stream, std::uint32_t size) {
    if (size < kHeaderBytes || size > sizeof(bBuffer)) return false;
    const std::size_t bodyBytes = size - kHeaderBytes;
    return std::fread(bBuffer + kHeaderBytes, 1, bodyBytes, stream) == bodyBytes;
}

}  // namespace

int iAnalizeM4aFile(const std::string& path) {
    clearRecord();
    const std::unique_ptr<std::FILE, FileCloser> stream(std::fopen(path.c_str(), "rb"));
    if (!stream) return -1;
    while (std::feof(stream.get()) == 0 && lGetLevel0Block(stream.get()) >= 0) continue;
    return 0;
}

// An atom of a type unknown here is not stepped over: the walk goes on behind its header, and takes
// what stands there for headers. One that is to be stepped over but says that it is smaller than
// its header ends the walk, which would never end otherwise.
long lGetLevel0Block(std::FILE* stream) {
    dAddress = std::ftell(stream);
    if (std::fread(bBuffer, 1, 4, stream) < 4) return -1;
    if (std::fread(bBuffer + 4, 1, 4, stream) < 4) return -1;
    const std::uint32_t size = dGet4bytes(bBuffer);
    const std::uint32_t type = dGet4bytes(bBuffer + 4);
    std::uint8_t* const body = bBuffer + kHeaderBytes;
    vAnalizeAtomType(type);
    switch (type) {
        case fourCharCode("ftyp"):
            if (!readBody(stream, size)) return -1;
            vAnalizeAtomBody(size - kHeaderBytes, type, body);
            return 0;
        case fourCharCode("moov"):
            if (!readBody(stream, size)) return -1;
            return lGetChildBlock(1, static_cast<unsigned long>(dAddress) + kHeaderBytes,
                                  size - kHeaderBytes, type, body);
        case fourCharCode("free"):
        case fourCharCode("mdat"):
        case fourCharCode("skip"):
        case fourCharCode("wide"):
            if (size < kHeaderBytes) return -1;
            std::fseek(stream, dAddress + static_cast<long>(size), SEEK_SET);
            return 0;
        default:
            return 0;
    }
}

// Each level is taken to be four bytes longer than its container's body. This is kept: where levels
// nest, their surplus can add up to a header, and what stands behind them is then read twice.
long lGetChildBlock(std::uint8_t, unsigned long, std::uint32_t length, std::uint32_t owner,
                    const std::uint8_t* region) {
    const Region whole{region, length};
    treeEnd = region + length;
    std::size_t depth = 0;
    levels[depth++] = {0, length, owner};
    while (depth > 0) {
        Level& level = levels[depth - 1];
        if (level.remaining < kHeaderBytes) {
            --depth;
            continue;
        }
        const Atom atom = takeAtom(whole, level);
        const bool isWhole = atom.size >= kHeaderBytes;  // else there is nothing in it
        vAnalizeAtomType(atom.type);
        if (isContainer(atom.type))
            levels[depth++] = {atom.body, isWhole ? atom.size - 4 : 0, atom.type};
        else
            vAnalizeAtomBody(isWhole ? atom.size - kHeaderBytes : 0, atom.type,
                             whole.at(atom.body));
    }
    treeEnd = nullptr;
    return 0;
}

std::uint32_t dGet4bytes(const void* bytes) {
    const auto* byte = static_cast<const std::uint8_t*>(bytes);
    return std::uint32_t{byte[0]} << 24 | std::uint32_t{byte[1]} << 16 |
           std::uint32_t{byte[2]} << 8 | std::uint32_t{byte[3]};
}

std::uint16_t wGet2bytes(const void* bytes) {
    const auto* byte = static_cast<const std::uint8_t*>(bytes);
    return static_cast<std::uint16_t>(byte[0] << 8 | byte[1]);
}

}  // namespace atdp
