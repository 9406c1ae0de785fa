// Files that are replaced between being opened and being played.
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <iterator>

#include "services/sound_file.h"
#include "tests/support/temporary_file.h"

namespace atdp::test {
namespace {

std::string bytesOf(const std::string& name) {
    std::ifstream file(std::string(ATDP_TEST_DATA) + "/" + name, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
}

void overwrite(const std::string& path, const std::string& bytes) {
    std::fstream(path, std::ios::binary | std::ios::in | std::ios::out) << bytes;
}

// The packets would be decoded to more samples than there is room for.
TEST(ChangedFile, OfAnotherConfigurationIsNotPlayed) {
    std::string bytes = bytesOf("lossless.m4a");
    const TemporaryFile file(bytes);
    auto sound = services::SoundFile::open(file.path());
    ASSERT_TRUE(sound);
    const std::size_t cookie = bytes.rfind("alac") + 8;  // behind the atom's version and flags
    ASSERT_EQ(bytes[cookie + 9], 2);
    bytes[cookie + 9] = 8;
    overwrite(file.path(), bytes);
    EXPECT_FALSE((*sound)->makeReader());
}

TEST(ChangedFile, OfAnotherKindIsNotPlayed) {
    for (const char* name : {"lossless.m4a", "layer3-cbr128.mp3", "layer3.mp4"}) {
        const TemporaryFile file(bytesOf(name));
        auto sound = services::SoundFile::open(file.path());
        ASSERT_TRUE(sound) << name;
        overwrite(file.path(), std::string(std::filesystem::file_size(file.path()), '\x55'));
        EXPECT_FALSE((*sound)->makeReader()) << name;
        EXPECT_FALSE((*sound)->lengthInFrames()) << name;
    }
}

}  // namespace
}  // namespace atdp::test
