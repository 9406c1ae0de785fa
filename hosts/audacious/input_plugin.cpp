// The plug-in as the player sees it.
#include <libaudcore/audio.h>
#include <libaudcore/plugin.h>
#include <libaudcore/runtime.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <exception>
#include <memory>
#include <new>
#include <string>

#include "host/failure.h"
#include "host/frame_reader.h"
#include "host/opened_file.h"
#include "host/plugin_module.h"
#include "hosts/audacious/local_path.h"
#include "hosts/audacious/preferences.h"
#include "hosts/audacious/song_facts.h"
#include "platform/export.h"

namespace atdp::audacious {
namespace {

// Between two looks at whether to stop: a tenth of a second at most rates.
constexpr std::uint32_t kBlockFrames = 4096;

// The player asks a plug-in by what is inside a file only where several have the extension, or
// none: one that no other plug-in has would come to us whatever is inside, also from the network.
// So .m4b, .mov, .caf and .aifc, where most files or many are of kinds that others decode, are not
// here. They are still found by what is inside.
const char* const kExtensions[] = {"wav", "wave", "rf64", "aif", "aiff", "au",  "mp3",
                                   "mp2", "mp1",  "mpa",  "m4a", "mp4",  "w64", nullptr};

constexpr const char* kAbout =
    "Plays WAV, AIFF, CAF, AU, Wave64, MPEG audio and Apple Lossless files through the "
    "AudioToolbox decoder module: gapless, with exact lengths and exact seeking.";

// Runs one of the player's calls: no exception may get back to it.
template <class Call>
bool guarded(audlog::Level level, Call call) noexcept {
    try {
        return call();
    } catch (const std::bad_alloc&) {
        audlog::log(level, __FILE__, __LINE__, __FUNCTION__, "Out of memory.\n");
    } catch (const std::exception& failure) {
        audlog::log(level, __FILE__, __LINE__, __FUNCTION__, "%s\n", failure.what());
    }
    return false;
}

void logModuleLine(const char* line, void*) {
    AUDDBG("%s\n", line);
}

// The player's sound has whole rates, which a file may go far beyond, and a limited number of
// channels.
void fitToPlayer(SeekableFileDecoder& decoder) {
    constexpr float kMostRate = 768'000;
    const float rate = std::clamp(std::round(decoder.getSamplingRate()), 1.0f, kMostRate);
    if (rate != decoder.getSamplingRate() && !decoder.setSamplingRate(rate))
        throw host::Failure("AudioToolbox Decoder", "the file's rate is none that can be played");
    if (decoder.getChannels() > AUD_MAX_CHANNELS) decoder.setChannels(2);
}

}  // namespace

class AudioToolboxInput final : public InputPlugin {
 public:
    AudioToolboxInput()
        : InputPlugin({"AudioToolbox Decoder", nullptr, kAbout, &kPreferences},
                      InputInfo().with_priority(0).with_exts(kExtensions)) {}

    bool init() override;
    void cleanup() override { module_.reset(); }
    bool is_our_file(const char* uri, VFSFile& file) override;
    bool read_tag(const char* uri, VFSFile& file, Tuple& tuple, Index<char>* image) override;
    bool play(const char* uri, VFSFile& file) override;

 private:
    host::PluginModule& module();  // throws host::Failure where init() failed
    host::OpenedFile open(const char* uri);

    std::unique_ptr<host::PluginModule> module_;  // used by any number of threads at once
};

}  // namespace atdp::audacious

ATDP_EXPORT atdp::audacious::AudioToolboxInput aud_plugin_instance;

namespace atdp::audacious {

bool AudioToolboxInput::init() {
    return guarded(audlog::Error, [&] {
        setDefaultPreferences();
        module_ =
            std::make_unique<host::PluginModule>(host::modulePathBeside(&aud_plugin_instance));
        module_->log().passOn(logModuleLine, nullptr);
        return true;
    });
}

host::PluginModule& AudioToolboxInput::module() {
    if (!module_) throw host::Failure("AudioToolbox Decoder", "its module is not loaded");
    return *module_;
}

host::OpenedFile AudioToolboxInput::open(const char* uri) {
    const auto path = localPath(uri);
    if (!path) throw host::Failure(uri, "is not a file on this machine");
    return host::openFile(module(), *path, silenceThreshold());
}

bool AudioToolboxInput::is_our_file(const char* uri, VFSFile&) {
    return guarded(audlog::Debug, [&] {
        const auto path = localPath(uri);
        return path && module().plugin().findDecoderClassByPath(*path) != nullptr;
    });
}

bool AudioToolboxInput::read_tag(const char* uri, VFSFile& file, Tuple& tuple, Index<char>* image) {
    return guarded(audlog::Warning, [&] {
        host::OpenedFile sound = open(uri);
        describeSong(sound, module().log(), file, tuple, image);
        return true;
    });
}

bool AudioToolboxInput::play(const char* uri, VFSFile& file) {
    return guarded(audlog::Error, [&] {
        host::OpenedFile sound = open(uri);
        set_stream_bitrate(bitRate(sound, file));
        fitToPlayer(*sound.decoder);
        host::FrameReader reader(sound, module().log(), kBlockFrames);
        open_audio(FMT_FLOAT, static_cast<int>(reader.rate()), static_cast<int>(reader.channels()));
        while (!check_stop()) {
            if (const int milliseconds = check_seek(); milliseconds >= 0) {
                reader.startAt(static_cast<std::uint64_t>(
                    std::llround(milliseconds * double{reader.rate()} / 1000)));
            }
            const auto samples = reader.next();
            if (samples.empty()) break;
            write_audio(samples.data(), static_cast<int>(samples.size_bytes()));
        }
        return true;
    });
}

}  // namespace atdp::audacious
