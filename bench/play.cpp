// Plays a file to its end with one decoder, for tools that count what that costs:
//   atdp_play ours|libsndfile|libmpg123|libavcodec FILE
// Prints the samples played, and by how many bytes the program's private memory grew from before
// the file was opened.
#include <cstdint>
#include <cstdio>
#include <fstream>
#include <map>
#include <string>

#include "bench/libav_player.h"
#include "bench/mpg123_player.h"
#include "bench/plugin_player.h"
#include "bench/sndfile_player.h"

namespace {

using namespace atdp::bench;

const std::map<std::string, MakePlayer> kDecoders = {
    {"ours", [](const std::string& path) { return openWithPlugin(path); }},
    {"libsndfile", openWithSndfile},
    {"libmpg123", openWithMpg123},
    {"libavcodec", openWithLibav},
};

// Written to by this process alone, which leaves out code: proc(5), smaps_rollup.
std::int64_t privateBytes() {
    std::ifstream rollup("/proc/self/smaps_rollup");
    std::int64_t kilobytes = 0;
    for (std::string line; std::getline(rollup, line);)
        if (line.starts_with("Private_Dirty:"))
            kilobytes += std::stoll(line.substr(line.find(':') + 1));
    return kilobytes * 1024;
}

}  // namespace

int main(int argc, char** argv) try {
    const auto decoder = argc == 3 ? kDecoders.find(argv[1]) : kDecoders.end();
    require(decoder != kDecoders.end(), "atdp_play ours|libsndfile|libmpg123|libavcodec FILE");
    static float samples[2 * 512];
    preparePlugin();
    const std::int64_t before = privateBytes();
    const auto player = decoder->second(argv[2]);
    std::uint64_t frames = 0;
    for (std::size_t got = 1; got > 0; frames += got) got = player->read(samples, 512);
    std::printf("%llu %lld\n", static_cast<unsigned long long>(2 * frames),
                static_cast<long long>(privateBytes() - before));
    return 0;
} catch (const std::exception& error) {
    std::fprintf(stderr, "%s\n", error.what());
    return 1;
}
