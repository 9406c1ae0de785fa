#include "host/file_facts.h"

#include <charconv>
#include <cstdio>
#include <new>
#include <utility>
#include <variant>

#include "host/number_text.h"
#include "host/text_escape.h"

namespace atdp::host {
namespace {

using Json = nlohmann::ordered_json;

// Four characters, the most significant byte first.
std::string fourCharText(std::int32_t code) {
    std::string text;
    for (int shift = 24; shift >= 0; shift -= 8) text += static_cast<char>(code >> shift);
    return text;
}

MetadataList metadataOf(OpenedFile& file) {
    const auto list = file.decoder->getMetaData();
    if (!list) throw std::bad_alloc();
    return std::move(*list);
}

struct TextOf {
    std::string operator()(const std::string& text) const { return text; }
    std::string operator()(float number) const { return plainNumber(number); }
    template <class Integer>
    std::string operator()(Integer number) const {
        return std::to_string(number);
    }
};

// A float as the number that people know it by: 44100, and 0.1 rather than the double nearest to
// the float, 0.10000000149011612.
Json jsonNumber(float value) {
    constexpr float kTwoTo63 = 0x1p63f;
    if (value > -kTwoTo63 && value < kTwoTo63) {
        const auto whole = static_cast<std::int64_t>(value);
        if (static_cast<float>(whole) == value) return whole;
    }
    const std::string text = plainNumber(value);
    double number = 0;
    std::from_chars(text.data(), text.data() + text.size(), number);
    return number;  // not a number becomes null
}

struct JsonOf {
    Json operator()(const std::string& text) const { return validUtf8(text); }
    Json operator()(float number) const { return jsonNumber(number); }
    template <class Integer>
    Json operator()(Integer number) const {
        return number;
    }
};

std::string line(const std::string& key, const std::string& value) {
    return "  " + printableText(key + ": " + value) + "\n";
}

std::string durationText(std::uint64_t nanoseconds) {
    char thousandths[8];
    std::snprintf(thousandths, sizeof thousandths, ".%03u",
                  static_cast<unsigned>(nanoseconds / 1'000'000 % 1000));
    return clockText(static_cast<double>(nanoseconds / 1'000'000'000)) + thousandths + " (" +
           std::to_string(nanoseconds) + " ns)";
}

}  // namespace

std::string factsAsText(OpenedFile& file) {
    SeekableFileDecoder& decoder = *file.decoder;
    std::string text = printableText(file.path) + "\n";
    text += line("class", file.decoderClass->name);
    text += line("sampling rate", plainNumber(decoder.getSamplingRate()) + " Hz");
    text += line("channels", std::to_string(decoder.getChannels()));
    text += line("bits", std::to_string(decoder.getBits()));
    text += line("format", fourCharText(decoder.getFormat()));
    text += line("duration", durationText(decoder.getDuration()));
    text += line("bit rate", std::to_string(decoder.getBitRate()) + " bytes per second");
    text +=
        line("preferred buffer size", std::to_string(decoder.getPreferredBufferSize()) + " frames");
    text += line("priming frames", std::to_string(decoder.getPrimingFrames()));
    text += line("remainder frames", std::to_string(decoder.getRemainderFrames()));
    text += "  metadata:\n";
    for (const MetadataEntry& entry : metadataOf(file)) {
        text += "  " + line(entry.key, std::visit(TextOf(), entry.value));
    }
    return text;
}

Json factsAsJson(OpenedFile& file) {
    SeekableFileDecoder& decoder = *file.decoder;
    Json metadata = Json::array();
    for (const MetadataEntry& entry : metadataOf(file)) {
        metadata.push_back(
            Json::object({{validUtf8(entry.key), std::visit(JsonOf(), entry.value)}}));
    }
    return {
        {"path", validUtf8(file.path)},
        {"class", file.decoderClass->name},
        {"samplingRate", jsonNumber(decoder.getSamplingRate())},
        {"channels", decoder.getChannels()},
        {"bits", decoder.getBits()},
        {"format", validUtf8(fourCharText(decoder.getFormat()))},
        {"durationNs", decoder.getDuration()},
        {"bitRate", decoder.getBitRate()},
        {"preferredBufferSize", decoder.getPreferredBufferSize()},
        {"primingFrames", decoder.getPrimingFrames()},
        {"remainderFrames", decoder.getRemainderFrames()},
        {"metadata", metadata},
    };
}

}  // namespace atdp::host
