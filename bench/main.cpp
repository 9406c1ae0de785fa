// Compares our decoders with those that people would use instead, on files that it makes itself.
#include <algorithm>
#include <cstdio>
#include <exception>
#include <memory>
#include <random>

#include "bench/bare_loop.h"
#include "bench/comparison.h"
#include "bench/libav_player.h"
#include "bench/mpg123_player.h"
#include "bench/plugin_player.h"
#include "bench/resamplers.h"
#include "bench/sndfile_player.h"
#include "bench/sounds.h"

namespace {

using namespace atdp::bench;

constexpr std::size_t kMostSamples = 1 << 16;  // of one read
constexpr std::size_t kSmallRequest = 512;     // frames
constexpr std::size_t kPacketRequest = 1152;

std::unique_ptr<Player> openWithOurs(const std::string& path) {
    return openWithPlugin(path);
}

void readToEnd(Player& player, std::size_t request) {
    static float samples[kMostSamples];
    while (player.read(samples, request) > 0) continue;
}

// The whole file, opened anew each time.
Contestant playing(const std::string& name, const MakePlayer& open, const std::string& path,
                   std::size_t request) {
    return {name, [=]() -> Work {
                return [=] {
                    const double start = processorTime();
                    readToEnd(*open(path), request);
                    return processorTime() - start;
                };
            }};
}

// From opening to the first frames.
Contestant opening(const std::string& name, const MakePlayer& open, const std::string& path) {
    return {name, [=]() -> Work {
                return [=] {
                    static float samples[2 * kSmallRequest];
                    const double start = processorTime();
                    require(open(path)->read(samples, kSmallRequest) > 0, "no sound");
                    return processorTime() - start;
                };
            }};
}

// A file that was played to the end, again from its start.
Contestant playingAgain(const std::string& name, const MakePlayer& open, const std::string& path,
                        std::size_t request) {
    return {name, [=]() -> Work {
                return [=, player = std::shared_ptr<Player>(open(path))] {
                    readToEnd(*player, request);
                    const double start = processorTime();
                    player->seek(0);
                    readToEnd(*player, request);
                    return processorTime() - start;
                };
            }};
}

// A thousand places in turn, and a few frames from each: the seconds of all or of the slowest, as
// `combine` makes of two.
Contestant seeking(const std::string& name, const MakePlayer& open, const std::string& path,
                   std::uint64_t frames, double (*combine)(double, double)) {
    return {name, [=]() -> Work {
                return [=, player = std::shared_ptr<Player>(open(path))] {
                    static float samples[2 * kSmallRequest];
                    std::mt19937_64 random(1);
                    double seconds = 0;
                    for (int i = 0; i < 1000; ++i) {
                        const double start = processorTime();
                        player->seek(random() % frames);
                        require(player->read(samples, kSmallRequest) > 0, "no sound");
                        seconds = combine(seconds, processorTime() - start);
                    }
                    return seconds;
                };
            }};
}

double sum(double one, double other) {
    return one + other;
}

double slower(double one, double other) {
    return std::max(one, other);
}

std::vector<Comparison> linearPcm(const Sounds& sounds) {
    const auto bare = [](BareLoop loop) {
        return [=](const std::string& path) { return openBareLoop(path, loop); };
    };
    std::vector<Comparison> all;
    for (const char* name : {"16.wav", "16.aiff", "24.wav", "24.aiff"}) {
        const std::string path = sounds.path(name);
        Comparison one{std::string(name) + ", requests of 512 frames",
                       {playing("ours", openWithOurs, path, kSmallRequest),
                        playing("libsndfile", openWithSndfile, path, kSmallRequest),
                        playing("a plain copy", bare(BareLoop::kCopy), path, 0)}};
        if (name[0] == '1') {
            const bool isSwapped = std::string_view(name) == "16.aiff";
            one.contestants.push_back(playing(
                "a bare loop", bare(isSwapped ? BareLoop::kSigned16Swapped : BareLoop::kSigned16),
                path, 0));
        }
        all.push_back(std::move(one));
    }
    return all;
}

std::vector<Comparison> compressed(const Sounds& sounds) {
    std::vector<Comparison> all;
    for (const char* name : {"128.mp3", "320.mp3", "vbr.mp3", "layer2.mp2"}) {
        const std::string path = sounds.path(name);
        all.push_back({name,
                       {playing("ours", openWithOurs, path, kPacketRequest),
                        playing("libmpg123", openWithMpg123, path, kPacketRequest),
                        playing("libavcodec", openWithLibav, path, kPacketRequest)}});
    }
    for (const char* name : {"16.m4a", "24.m4a"})
        all.push_back({name,
                       {playing("ours", openWithOurs, sounds.path(name), kPacketRequest),
                        playing("libavcodec", openWithLibav, sounds.path(name), kPacketRequest)}});
    return all;
}

std::vector<Comparison> openings(const Sounds& sounds) {
    const std::string untold = sounds.path("untold.mp3");
    const std::string wave = sounds.path("16.wav");
    const std::string lossless = sounds.path("16.m4a");
    return {{"open an MP3 of untold length",
             {opening("ours", openWithOurs, untold),
              opening("libmpg123, scanned", openAndScanWithMpg123, untold),
              opening("libavformat", openWithLibav, untold)}},
            {"open 16.wav",
             {opening("ours", openWithOurs, wave), opening("libsndfile", openWithSndfile, wave)}},
            {"open 16.m4a",
             {opening("ours", openWithOurs, lossless),
              opening("libavformat", openWithLibav, lossless)}}};
}

std::vector<Comparison> seeks(const Sounds& sounds, double seconds) {
    // Not into the last second of an MP3, which the interface does not seek exactly.
    const auto frames = static_cast<std::uint64_t>(44100 * (seconds - 3));
    std::vector<Comparison> all;
    const auto add = [&](const std::string& work, const std::string& path, std::uint64_t places,
                         double (*combine)(double, double), const MakePlayer& openExactly) {
        all.push_back({work,
                       {seeking("ours", openWithOurs, path, places, combine),
                        seeking("libavformat", openWithLibav, path, places, combine)}});
        if (openExactly) {
            auto& others = all.back().contestants;
            others.push_back(
                seeking("libavformat, 3 packets early", openWithHastyLibav, path, places, combine));
            others.push_back(seeking("libmpg123, scanned", openExactly, path, places, combine));
        }
        all.back().isDoneOnce = combine == slower;
    };
    for (const std::string name : {"128.mp3", "vbr.mp3", "untold.mp3", "16.m4a"}) {
        const std::string path = sounds.path(name);
        const std::uint64_t places = name == "untold.mp3" ? Sounds::kAlbum * frames : frames;
        const MakePlayer exactly = name == "16.m4a" ? MakePlayer() : openAndScanWithMpg123;
        add("1000 seeks, " + name, path, places, sum, exactly);
        add("the slowest of 1000 seeks, " + name, path, places, slower, exactly);
    }
    return all;
}

std::vector<Comparison> conversions(const Sounds& sounds) {
    const std::string path = sounds.path("16.wav");
    const auto at48 = [](const std::string& file) { return openWithPlugin(file, 48000); };
    return {{"44.1 to 48 kHz",
             {playing("ours", at48, path, 2048), playingAgain("libsoxr", openWithSoxr, path, 0),
              playingAgain("libsamplerate, best", openWithSamplerate, path, 0)}}};
}

std::vector<Comparison> repetitions(const Sounds& sounds) {
    std::vector<Comparison> all;
    for (const char* name : {"16.wav", "shrunk.wav", "128.mp3", "16.m4a"}) {
        const std::string path = sounds.path(name);
        all.push_back({std::string("again from the start, ") + name,
                       {playingAgain("ours", openWithOurs, path, kSmallRequest),
                        playing("the first run", openWithOurs, path, kSmallRequest)}});
    }
    return all;
}

}  // namespace

// bench [SECONDS OF SOUND] [flags of Google Benchmark]
int main(int argc, char** argv) try {
    const bool isTold = argc > 1 && argv[1][0] != '-';
    const double seconds = isTold ? std::atof(argv[1]) : 120;
    if (isTold) std::rotate(argv + 1, argv + 2, argv + argc--);
    require(seconds >= 4, "four seconds of sound at least");
    const Sounds sounds(seconds);
    preparePlugin();
    std::vector<Comparison> all;
    for (auto& some : {linearPcm(sounds), compressed(sounds), openings(sounds),
                       seeks(sounds, seconds), conversions(sounds), repetitions(sounds)})
        all.insert(all.end(), some.begin(), some.end());
    return compare(all, argc, argv);
} catch (const std::exception& error) {
    std::fprintf(stderr, "bench: %s\n", error.what());
    return 1;
}
