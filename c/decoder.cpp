// The decoders. A handle keeps its class and makes a new decoder for each file, since one that has
// been opened takes no second file.
#include <algorithm>
#include <cmath>
#include <cstddef>
#include <limits>
#include <memory>
#include <new>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "c/entries.h"
#include "c/guarded.h"
#include "c/sized_structure.h"
#include "decoder/audio_toolbox_wav_decoder.h"
#include "decoder/option_keys.h"
#include "host/frame_exact_seek.h"
#include "mp3/audio_toolbox_mp3_decoder.h"
#include "mp4/audio_toolbox_mp4_decoder.h"
#include "plugin/audio_toolbox_decoder_plugin.h"
#include "plugin/module.h"

struct atdp_decoder {
    const atdp::DecoderClass& decoderClass;
    std::unique_ptr<atdp::SeekableFileDecoder> file;  // null when none is open
    std::unique_ptr<atdp::MetadataList> metadata;     // null until it is asked for
};

namespace atdp::c {
namespace {

constexpr std::uint32_t kFramesDroppedAtOnce = 4096;
constexpr std::size_t kFirstOptionsSize =
    offsetof(atdp_options, mp3_threshold_db) + sizeof(atdp_options::mp3_threshold_db);
constexpr std::size_t kFirstFactsSize =
    offsetof(atdp_facts, remainder_frames) + sizeof(atdp_facts::remainder_frames);

const DecoderClass* classOfName(std::string_view name) {
    for (const auto* found :
         {&AudioToolboxWavDecoder::decoderClass(), &AudioToolboxMP3Decoder::decoderClass(),
          &AudioToolboxMP4Decoder::decoderClass()}) {
        if (name == found->name) return found;
    }
    return nullptr;
}

const DecoderClass* classOfFile(const char* path) {
    const auto plugin = AudioToolboxDecoderPlugin::initWithKey(kPluginKey);
    if (!plugin) throw std::bad_alloc();
    return plugin->findDecoderClassByPath(path);
}

atdp_result create(const DecoderClass* decoderClass, atdp_decoder** decoder) {
    if (decoderClass == nullptr) return ATDP_NO_DECODER;
    *decoder = new atdp_decoder{*decoderClass, nullptr, nullptr};
    return ATDP_OK;
}

// The decoder's results are this library's too.
atdp_result resultOf(std::int32_t result) {
    return static_cast<atdp_result>(result);
}

// What keeps a call from the open file, if anything does.
atdp_result checkOpen(const atdp_decoder* decoder) {
    if (decoder == nullptr) return ATDP_INVALID;
    return decoder->file ? ATDP_OK : ATDP_WRONG_STATE;
}

std::optional<Options> optionsFrom(const atdp_options* given) {
    Options options;
    if (given == nullptr) return options;
    const auto known = structureFrom(given, kFirstOptionsSize);
    if (!known ||
        !(std::fabs(known->mp3_threshold_db) <= double{std::numeric_limits<float>::max()}))
        return std::nullopt;
    options.emplace(DECODER_OPTION_KEY_MP3_THREASHOLD_DB, known->mp3_threshold_db);
    return options;
}

atdp_result open(atdp_decoder& decoder, const char* path, const atdp_options* given) {
    const auto options = optionsFrom(given);
    if (!options) return ATDP_INVALID;
    auto file = decoder.decoderClass.make();
    if (!file) return ATDP_NO_MEMORY;
    const std::int32_t result = file->openByPath(path, &*options);
    if (result == DECODER_RESULT_OK) {
        decoder.file = std::move(file);
    } else {
        file->close();
    }
    return resultOf(result);
}

void close(atdp_decoder& decoder) {
    decoder.metadata.reset();
    if (decoder.file) decoder.file->close();
    decoder.file.reset();
}

const MetadataList& metadataOf(atdp_decoder& decoder) {
    if (!decoder.metadata) decoder.metadata = decoder.file->getMetaData();
    if (!decoder.metadata) throw std::bad_alloc();
    return *decoder.metadata;
}

std::uint32_t channelsOf(SeekableFileDecoder& file) {
    return static_cast<std::uint32_t>(std::max(file.getChannels(), 1));
}

// Delivers frames to nobody until so many are gone or the sound ends.
atdp_result dropFrames(SeekableFileDecoder& file, std::uint64_t frames) {
    const std::uint32_t channels = channelsOf(file);
    std::vector<float> samples(std::min<std::uint64_t>(frames, kFramesDroppedAtOnce) * channels);
    while (frames > 0) {
        const auto asked = static_cast<std::uint32_t>(
            std::min<std::uint64_t>(frames, kFramesDroppedAtOnce) * channels);
        std::uint32_t delivered = asked;
        const std::int32_t result = file.getNextSamples(samples.data(), &delivered);
        if (result != DECODER_RESULT_OK) return resultOf(result);
        if (delivered < asked) break;
        frames -= delivered / channels;
    }
    return ATDP_OK;
}

atdp_result settingResult(bool accepted) {
    return accepted ? ATDP_OK : ATDP_FAILED;
}

}  // namespace
}  // namespace atdp::c

using namespace atdp::c;

const char* atdp_class_for_path(const char* path) noexcept {
    const atdp::DecoderClass* found = nullptr;
    if (path != nullptr) {
        guarded([&] {
            found = classOfFile(path);
            return ATDP_OK;
        });
    }
    return found != nullptr ? found->name : nullptr;
}

atdp_result atdp_create(const char* class_name, atdp_decoder** decoder) noexcept {
    if (decoder == nullptr) return ATDP_INVALID;
    *decoder = nullptr;
    if (class_name == nullptr) return ATDP_INVALID;
    return guarded([&] { return create(classOfName(class_name), decoder); });
}

atdp_result atdp_create_for_path(const char* path, atdp_decoder** decoder) noexcept {
    if (decoder == nullptr) return ATDP_INVALID;
    *decoder = nullptr;
    if (path == nullptr) return ATDP_INVALID;
    return guarded([&] { return create(classOfFile(path), decoder); });
}

void atdp_destroy(atdp_decoder* decoder) noexcept {
    atdp_close(decoder);
    delete decoder;
}

const char* atdp_decoder_class(const atdp_decoder* decoder) noexcept {
    return decoder != nullptr ? decoder->decoderClass.name : nullptr;
}

atdp_result atdp_open(atdp_decoder* decoder, const char* path,
                      const atdp_options* options) noexcept {
    if (decoder == nullptr || path == nullptr) return ATDP_INVALID;
    if (decoder->file) return ATDP_WRONG_STATE;
    return guarded([&] { return open(*decoder, path, options); });
}

atdp_result atdp_close(atdp_decoder* decoder) noexcept {
    if (decoder == nullptr) return ATDP_INVALID;
    return guarded([&] {
        close(*decoder);
        return ATDP_OK;
    });
}

atdp_result atdp_get_facts(atdp_decoder* decoder, atdp_facts* facts) noexcept {
    if (facts == nullptr) return ATDP_INVALID;
    if (const auto problem = checkOpen(decoder)) return problem;
    return guarded([&] {
        atdp::SeekableFileDecoder& file = *decoder->file;
        atdp_facts known{};
        known.duration = file.getDuration();
        known.timestamp = file.getTimestamp();
        known.rate = file.getSamplingRate();
        known.channels = file.getChannels();
        known.bits = file.getBits();
        known.format = static_cast<std::uint32_t>(file.getFormat());
        known.bit_rate = file.getBitRate();
        known.preferred_frames = file.getPreferredBufferSize();
        known.priming_frames = file.getPrimingFrames();
        known.remainder_frames = file.getRemainderFrames();
        return handOver(known, facts, kFirstFactsSize) ? ATDP_OK : ATDP_INVALID;
    });
}

atdp_result atdp_metadata_count(atdp_decoder* decoder, std::uint32_t* count) noexcept {
    if (count == nullptr) return ATDP_INVALID;
    *count = 0;
    if (const auto problem = checkOpen(decoder)) return problem;
    return guarded([&] {
        *count = static_cast<std::uint32_t>(metadataOf(*decoder).size());
        return ATDP_OK;
    });
}

atdp_result atdp_metadata_at(atdp_decoder* decoder, std::uint32_t index,
                             atdp_entry* entry) noexcept {
    if (entry == nullptr) return ATDP_INVALID;
    if (const auto problem = checkOpen(decoder)) return problem;
    return guarded([&] { return entryAt(metadataOf(*decoder), index, entry); });
}

atdp_result atdp_read(atdp_decoder* decoder, float* samples, std::uint32_t* frames) noexcept {
    if (frames == nullptr) return ATDP_INVALID;
    const std::uint32_t room = std::exchange(*frames, 0);
    if (const auto problem = checkOpen(decoder)) return problem;
    return guarded([&] {
        const std::uint32_t channels = channelsOf(*decoder->file);
        if (samples == nullptr || room > std::numeric_limits<std::uint32_t>::max() / channels)
            return ATDP_INVALID;
        std::uint32_t delivered = room * channels;
        const std::int32_t result = decoder->file->getNextSamples(samples, &delivered);
        *frames = delivered / channels;
        return resultOf(result);
    });
}

atdp_result atdp_seek(atdp_decoder* decoder, std::uint64_t nanoseconds) noexcept {
    if (const auto problem = checkOpen(decoder)) return problem;
    return guarded([&] { return resultOf(decoder->file->seek(nanoseconds)); });
}

atdp_result atdp_seek_frame(atdp_decoder* decoder, std::uint64_t frame) noexcept {
    if (const auto problem = checkOpen(decoder)) return problem;
    return guarded([&] {
        atdp::SeekableFileDecoder& file = *decoder->file;
        const auto point = atdp::host::seekPointFor(decoder->decoderClass, file, frame);
        const auto result = resultOf(file.seek(point.nanoseconds));
        return result == ATDP_OK ? dropFrames(file, frame - point.frame) : result;
    });
}

atdp_result atdp_set_rate(atdp_decoder* decoder, float rate) noexcept {
    if (const auto problem = checkOpen(decoder)) return problem;
    return guarded([&] { return settingResult(decoder->file->setSamplingRate(rate)); });
}

atdp_result atdp_set_channels(atdp_decoder* decoder, std::int32_t channels) noexcept {
    if (const auto problem = checkOpen(decoder)) return problem;
    return guarded([&] { return settingResult(decoder->file->setChannels(channels)); });
}

atdp_result atdp_set_bits(atdp_decoder* decoder, std::int32_t bits) noexcept {
    if (const auto problem = checkOpen(decoder)) return problem;
    return guarded([&] { return settingResult(decoder->file->setBits(bits)); });
}
