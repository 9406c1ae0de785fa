#include "plugin/audio_toolbox_decoder_plugin.h"

#include <cstring>
#include <new>
#include <utility>

#include "decoder/audio_toolbox_wav_decoder.h"
#include "mp3/audio_toolbox_mp3_decoder.h"
#include "mp4/audio_toolbox_mp4_decoder.h"
#include "platform/extended_audio_file.h"
#include "platform/log.h"
#include "plugin/module.h"

namespace atdp {
namespace {

struct ExtAudioFileDisposer {
    void operator()(ExtAudioFileRef reader) const { ExtAudioFileDispose(reader); }
};
using ScopedExtAudioFile = std::unique_ptr<OpaqueExtAudioFile, ExtAudioFileDisposer>;

const DecoderClass* classForFormat(std::uint32_t formatID) {
    switch (formatID) {
        case kAudioFormatMPEGLayer1:
        case kAudioFormatMPEGLayer2:
        case kAudioFormatMPEGLayer3:
            return &AudioToolboxMP3Decoder::decoderClass();
        case kAudioFormatAppleLossless:
            return &AudioToolboxMP4Decoder::decoderClass();
        case kAudioFormatLinearPCM:
            return &AudioToolboxWavDecoder::decoderClass();
        default:
            return nullptr;
    }
}

}  // namespace

// A bare init must never produce a usable plug-in.
std::unique_ptr<PluginProtocol> AudioToolboxDecoderPlugin::init() {
    return nullptr;
}

std::unique_ptr<PluginProtocol> AudioToolboxDecoderPlugin::initWithKey(
    std::optional<std::string_view> key) {
    if (key != kPluginKey) return nullptr;
    return std::unique_ptr<PluginProtocol>(new (std::nothrow) AudioToolboxDecoderPlugin);
}

// Each value is made where it stays: a std::variant of GCC 12 does not survive memory running out
// while it is copied.
std::unique_ptr<Properties> AudioToolboxDecoderPlugin::getProperties() {
    try {
        auto properties = std::make_unique<Properties>();
        const auto add = [&](const char* key, PropertyValue value) {
            properties->emplace_back(key, std::move(value));
        };
        add(PLUGIN_KEY_NAME, "AudioToolboxDecoderPlugin");
        add(PLUGIN_KEY_IF_VER, "1.0.0");
        add(PLUGIN_KEY_PRIO, std::uint32_t{100});
        add(PLUGIN_KEY_PLUG_TYPE, std::uint32_t{1});
        add(PLUGIN_KEY_CODEC_TYPE, std::uint32_t{1});
        add(PLUGIN_KEY_EXTS, std::vector<std::string>{"wav", "aiff", "aif", "mp3", "m4a"});
        return properties;
    } catch (const std::bad_alloc&) {
        return nullptr;
    }
}

// A file that cannot be opened, or that holds another encoding, is no news: hosts ask about every
// file of a folder. Only failures that should not happen are logged.
const DecoderClass* AudioToolboxDecoderPlugin::findDecoderClassByPath(const std::string& path) {
    const ScopedCFURL url(CFURLCreateFromFileSystemRepresentation(
        kCFAllocatorDefault, reinterpret_cast<const std::uint8_t*>(path.c_str()),
        static_cast<long>(std::strlen(path.c_str())), false));
    if (!url) {
        NSLog("CFURLCreateFromFileSystemRepresentation failed.");
        return nullptr;
    }
    ExtAudioFileRef opened = nullptr;
    if (ExtAudioFileOpenURL(url.get(), &opened) != noErr) return nullptr;
    const ScopedExtAudioFile reader(opened);

    AudioStreamBasicDescription format{};
    std::uint32_t bytes = sizeof(format);
    const OSStatus status = ExtAudioFileGetProperty(
        reader.get(), kExtAudioFileProperty_FileDataFormat, &bytes, &format);
    if (status != noErr) {
        NSLog("ExtAudioFileGetProperty (kExtAudioFileProperty_FileDataFormat) failed.(0x%lX)",
              status);
        return nullptr;
    }
    return classForFormat(format.mFormatID);
}

}  // namespace atdp
