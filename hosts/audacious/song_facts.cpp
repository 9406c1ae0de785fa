#include "hosts/audacious/song_facts.h"

#include <audacious/audtag.h>

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstdint>
#include <limits>
#include <new>
#include <string>
#include <string_view>
#include <utility>
#include <variant>

#include "host/frame_reader.h"
#include "hosts/audacious/preferences.h"

namespace atdp::audacious {
namespace {

// Of the list's keys, which a host knows by these texts.
constexpr const char* kTitle = "Title";
constexpr const char* kArtist = "Artist";
constexpr const char* kAlbum = "Album";
constexpr const char* kTrack = "Track";
constexpr const char* kSourceBits = "SrcBits";

// None of the numbers here is below 0.
int clampedToInt(double value) {
    return static_cast<int>(std::clamp(value, 0.0, double{std::numeric_limits<int>::max()}));
}

const MetadataValue* valueOf(const MetadataList& list, std::string_view key) {
    const auto entry = std::ranges::find(list, key, &MetadataEntry::key);
    return entry == list.end() ? nullptr : &entry->value;
}

const std::string* textOf(const MetadataList& list, std::string_view key) {
    return std::get_if<std::string>(valueOf(list, key));
}

// Some numbers come as text.
struct ToInt {
    int operator()(const std::string& text) const {
        int number = 0;
        std::from_chars(text.data(), text.data() + text.size(), number);
        return std::max(number, 0);
    }
    int operator()(auto number) const { return clampedToInt(static_cast<double>(number)); }
};

// 0 where there is none.
int numberOf(const MetadataList& list, std::string_view key) {
    const MetadataValue* const value = valueOf(list, key);
    return value == nullptr ? 0 : std::visit(ToInt(), *value);
}

// The ID3v2 tag at the start, often a large one with a picture, is no sound. Its size stands in
// the low seven bits of four bytes and leaves out the header of ten bytes.
std::int64_t leadingTagBytes(VFSFile& file) {
    constexpr std::int64_t kHeaderBytes = 10;
    unsigned char header[kHeaderBytes];
    if (file.fseek(0, VFS_SEEK_SET) != 0 || file.fread(header, 1, kHeaderBytes) != kHeaderBytes ||
        std::string_view(reinterpret_cast<const char*>(header), 3) != "ID3") {
        return 0;
    }
    std::int64_t bytes = 0;
    for (int at = 6; at < kHeaderBytes; ++at) bytes = bytes << 7 | (header[at] & 0x7F);
    return bytes + kHeaderBytes;
}

std::string codecName(const host::OpenedFile& sound, const MetadataList& list) {
    const std::string_view name = sound.decoderClass->name;
    if (name == "AudioToolboxMP3Decoder") return "MPEG audio";
    if (name == "AudioToolboxMP4Decoder") return "Apple Lossless";
    const int bits = numberOf(list, kSourceBits);
    return bits > 0 ? "PCM, " + std::to_string(bits) + " bits" : "PCM";
}

// In milliseconds. The decoder's own duration counts frames that a threshold or counts in a comment
// cut, at most a second at each end, so where something may be cut the last seconds are counted.
int exactLength(host::OpenedFile& sound, host::ModuleLog& log) {
    constexpr double kSecondsToCount = 4;
    host::FrameReader reader(sound, log);
    const double rate = double{reader.rate()};
    double frames = reader.fileFrames();
    if (sound.decoder->getPrimingFrames() != 0 || silenceThreshold()) {
        const double from = std::floor(std::max(frames - kSecondsToCount * rate, 0.0));
        reader.startAt(static_cast<std::uint64_t>(from));
        std::uint64_t samples = 0;
        for (auto block = reader.next(); !block.empty(); block = reader.next()) {
            samples += block.size();
        }
        frames = from + static_cast<double>(samples / reader.channels());
    }
    return clampedToInt(std::round(frames / rate * 1000));
}

void setTexts(const MetadataList& list, Tuple& tuple) {
    const std::pair<Tuple::Field, const char*> fields[] = {
        {Tuple::Title, kTitle}, {Tuple::Artist, kArtist}, {Tuple::Album, kAlbum}};
    for (const auto& [field, key] : fields) {
        if (const std::string* text = textOf(list, key)) tuple.set_str(field, text->c_str());
    }
    if (const int track = numberOf(list, kTrack); track > 0) tuple.set_int(Tuple::Track, track);
}

}  // namespace

int bitRate(host::OpenedFile& sound, VFSFile& file) {
    if (const int bytes = sound.decoder->getBitRate(); bytes > 0) return clampedToInt(8.0 * bytes);
    const double seconds = static_cast<double>(sound.decoder->getDuration()) / 1e9;
    const auto bytes = static_cast<double>(file.fsize() - leadingTagBytes(file));
    return seconds > 0 ? clampedToInt(8 * bytes / seconds) : 0;
}

void describeSong(host::OpenedFile& sound, host::ModuleLog& log, VFSFile& file, Tuple& tuple,
                  Index<char>* image) {
    const auto list = sound.decoder->getMetaData();
    if (!list) throw std::bad_alloc();
    if (file.fseek(0, VFS_SEEK_SET) == 0) audtag::read_tag(file, tuple, image);
    setTexts(*list, tuple);
    const int rate = clampedToInt(std::round(double{sound.decoder->getSamplingRate()}));
    const int channels = sound.decoder->getChannels();
    tuple.set_format(codecName(sound, *list).c_str(), channels, rate, bitRate(sound, file) / 1000);
    tuple.set_int(Tuple::Channels, channels);
    tuple.set_int(Tuple::Length, exactLength(sound, log));
}

}  // namespace atdp::audacious
