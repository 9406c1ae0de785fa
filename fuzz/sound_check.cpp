#include "fuzz/sound_check.h"

#include <algorithm>
#include <bit>
#include <cstdint>
#include <memory>
#include <random>
#include <vector>

#include "fuzz/bytes_read.h"
#include "fuzz/contract.h"
#include "fuzz/memory_file.h"
#include "services/convert/converting_reader.h"
#include "tests/support/client_format.h"

namespace atdp::fuzz {
namespace {

using services::ConvertingReader;

// Enough for a few packets of any kind, and little enough for thousands of inputs a second.
constexpr std::size_t kSamplesPlayed = 1 << 16;
constexpr int kSeeks = 4;
constexpr float kUntouched = 12345.0F;

// Frames behind a seek until all is as in a straight run. That is at once, but in MPEG audio with
// damaged packets, which leave traces in the library of those before them; and where such sound is
// converted it may be never.
std::size_t framesToSettle(const ConvertingReader& reader) {
    const AudioStreamBasicDescription& format = reader.file().description().format;
    if (format.mFormatID != kAudioFormatMPEGLayer1 && format.mFormatID != kAudioFormatMPEGLayer2 &&
        format.mFormatID != kAudioFormatMPEGLayer3)
        return 0;
    return reader.clientFormat().mSampleRate == format.mSampleRate
               ? std::size_t{3} * format.mFramesPerPacket
               : SIZE_MAX;
}

bool setFormat(ConvertingReader& reader, double rate, std::uint32_t channels) {
    return reader.setClientFormat(test::clientFormat(rate, channels)) == noErr;
}

// Reads once; false at the end and where the file cannot be read.
bool readOnce(ConvertingReader& reader, std::uint32_t frames, std::vector<float>* all) {
    const std::uint32_t channels = reader.clientFormat().mChannelsPerFrame;
    std::vector<float> samples((std::size_t{frames} + 1) * channels, kUntouched);
    std::uint32_t got = frames;
    if (!reader.read(samples.data(), &got)) return false;
    require(got <= frames, "no more frames than asked for");
    const std::size_t count = std::size_t{got} * channels;
    require(std::all_of(samples.begin() + static_cast<std::ptrdiff_t>(count), samples.end(),
                        [](float sample) { return sample == kUntouched; }),
            "nothing is written behind what was read");
    all->insert(all->end(), samples.begin(), samples.begin() + static_cast<std::ptrdiff_t>(count));
    return got > 0;
}

// A reader of the file that has read nothing yet.
std::unique_ptr<ConvertingReader> freshReader(const std::shared_ptr<services::SoundFile>& sound,
                                              const AudioStreamBasicDescription& format) {
    auto reader = std::make_unique<ConvertingReader>(sound);
    require(reader->setClientFormat(format) == noErr, "a format is accepted again");
    return reader;
}

void checkSeeks(ConvertingReader& reader, const std::vector<float>& straight,
                std::mt19937& random) {
    const std::uint32_t channels = reader.clientFormat().mChannelsPerFrame;
    const std::size_t frames = straight.size() / channels;
    for (int i = 0; i < kSeeks && frames > 0; ++i) {
        const std::size_t from = random() % frames;
        require(reader.seek(static_cast<std::int64_t>(from)) == noErr, "a frame can be sought");
        const std::size_t settled = framesToSettle(reader);
        const auto wanted = static_cast<std::uint32_t>(std::min<std::size_t>(
            frames - from, 1 + random() % 700 + std::min<std::size_t>(settled, 5000)));
        std::vector<float> part;
        while (part.size() < std::size_t{wanted} * channels)
            if (!readOnce(reader, wanted - static_cast<std::uint32_t>(part.size() / channels),
                          &part))
                break;
        require(part.size() == std::size_t{wanted} * channels, "what was read once is there again");
        for (std::size_t k = settled * channels; settled < wanted && k < part.size(); ++k)
            require(std::bit_cast<std::uint32_t>(part[k]) ==
                        std::bit_cast<std::uint32_t>(straight[from * channels + k]),
                    "a run from anywhere has the straight run's samples");
    }
}

void checkFormat(const std::shared_ptr<services::SoundFile>& sound, ConvertingReader& reader,
                 std::uint64_t length, std::mt19937& random) {
    std::vector<float> straight;
    const std::uint32_t channels = reader.clientFormat().mChannelsPerFrame;
    require(reader.seek(0) == noErr, "the first frame can be sought");
    bool goesOn = true;
    while (goesOn && straight.size() < kSamplesPlayed)
        goesOn = readOnce(reader, 1 + static_cast<std::uint32_t>(random() % 2000), &straight);
    const std::uint64_t frames = straight.size() / channels;
    require(goesOn ? frames <= length : frames == length, "the length is what is delivered");
    checkSeeks(reader, straight, random);
    checkSeeks(*freshReader(sound, reader.clientFormat()), straight, random);
    if (goesOn) return;
    require(reader.seek(static_cast<std::int64_t>(frames)) == noErr, "the end can be sought");
    require(!readOnce(reader, 100, &straight), "nothing is behind the end");
}

void checkDescription(const services::SoundDescription& sound, std::uint64_t fileBytes) {
    require(sound.data.bytes <= fileBytes && sound.data.offset <= fileBytes - sound.data.bytes,
            "the sound lies within the file");
    for (const auto& chunk : sound.tagChunks)
        require(chunk.body.bytes <= fileBytes && chunk.body.offset <= fileBytes - chunk.body.bytes,
                "a chunk lies within the file");
}

// Null where nothing in it can be played.
std::shared_ptr<services::SoundFile> openSound(const MemoryFile& file) {
    ReadAllowance allowance;
    allowance.grant(kReadsToOpen, file);
    auto sound = services::SoundFile::open(file.path());
    if (!sound) return nullptr;
    checkDescription((*sound)->description(), file.size());
    if (!(*sound)->lengthInFrames() || !(*sound)->gaplessCounts()) return nullptr;
    return *sound;
}

}  // namespace

void checkSound(std::span<const std::uint8_t> bytes, std::uint32_t choices) {
    const MemoryFile file(bytes);
    const auto sound = openSound(file);
    if (sound == nullptr) return;

    ReadAllowance allowance;
    allowance.grant(3 * (1 + 2 * kSeeks) * kReadsOfSeek, file);  // in three formats
    std::mt19937 random(choices);
    const std::uint64_t length = *sound->lengthInFrames();
    const AudioStreamBasicDescription& format = sound->description().format;
    ConvertingReader reader(sound);
    if (!setFormat(reader, format.mSampleRate, format.mChannelsPerFrame)) return;
    checkFormat(sound, reader, length, random);
    if (setFormat(reader, format.mSampleRate, 1 + choices % 8))
        checkFormat(sound, reader, length, random);
    const double rate = (choices & 0x100) != 0 ? 48000 : 11025;
    if (format.mSampleRate < rate / 32 || format.mSampleRate > rate * 32) return;
    if (!setFormat(reader, rate, 1 + choices % 3)) return;
    const auto converted =
        static_cast<std::uint64_t>(static_cast<double>(length) * rate / format.mSampleRate + 0.5);
    checkFormat(sound, reader, converted, random);
}

}  // namespace atdp::fuzz
