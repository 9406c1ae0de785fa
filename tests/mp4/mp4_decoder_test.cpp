// Metadata of Apple Lossless files. The platform follows a script; the atoms are in a real file.
#include <limits>

#include "tests/support/atom_builder.h"
#include "tests/support/mp4_decoder_test.h"

namespace atdp {
namespace {

using test::atom;
using test::item;
using test::movie;
using test::trackItem;

const std::string kItems = item("\251nam", 1, "Song") + item("\251ART", 2, "Band") +
                           item("\251alb", 1, "Album") + trackItem(7);

TEST_F(Mp4DecoderTest, OlderReleaseAddsASecondAlbumAndASecondTrack) {
    setInformation();
    const test::TemporaryFile file(movie("alac", kItems));
    const auto decoder = openDecoder(file);
    Lines expected{"Title=\"title\"",   "Album=\"album\"", "Track=3", "Artist=\"Band 2415919360\"",
                   "Album=\"Album 5\"", "Track=7u"};
    EXPECT_EQ(tags(*decoder), expected);
    expected = {"Title=\"title\"", "Album=\"album\"", "Track=3"};
    for (const double release : {1138.0, 2000.0, std::numeric_limits<double>::quiet_NaN()}) {
        NSAppKitVersionNumber = release;
        EXPECT_EQ(tags(*decoder), expected);
    }
    decoder->close();
    EXPECT_EQ(decoder->getMetaData(), nullptr);
}

TEST_F(Mp4DecoderTest, WithoutThePlatformsThereIsNoAlbumAndNoTrack) {
    const test::TemporaryFile file(movie("alac", kItems));
    const auto decoder = openDecoder(file);
    EXPECT_EQ(tags(*decoder), (Lines{"Title=\"Song\"", "Artist=\"Band 2415919360\""}));
    EXPECT_EQ(platform().calls,
              (Lines{"AudioFileGetProperty info file 1 8", "stringWithBytes Song 4",
                     "stringWithBytes Band 2415919360", "stringWithBytes Album 5"}));
    platform().failures["stringWithBytes"] = {-1};
    EXPECT_EQ(tags(*decoder), Lines{});
}

TEST_F(Mp4DecoderTest, OddTags) {
    const struct {
        const char* name;
        std::string items;
        Lines tags;  // behind title, album and track of the platform
    } rows[] = {
        {"none", "", {}},
        {"artist without data", atom("\251ART"), {}},
        {"artist of 7 bytes", atom("\251ART", atom("data", "1234567")), {}},
        {"artist empty", item("\251ART", 1, ""), {"Artist=\"\""}},
        {"album without data", atom("\251alb"), {}},
        {"album without track", item("\251alb", 1, "Album"), {"Album=\"Album 5\""}},
        {"album in the encoding of the track",
         item("\251alb", 1, "Album") + trackItem(7, 2),
         {"Album=\"Album 2415919360\"", "Track=7u"}},
        {"track without data", atom("trkn"), {"Track=0u"}},
        {"track of two bytes", trackItem(0xFFFE), {"Track=65534u"}},
        {"writer over the album's length",
         item("\251wrt", 1, std::string(252, '\xFF') + test::word(13)) + atom("\251alb"),
         {}},
    };
    setInformation();
    for (const auto& row : rows) {
        Lines expected{"Title=\"title\"", "Album=\"album\"", "Track=3"};
        expected.insert(expected.end(), row.tags.begin(), row.tags.end());
        EXPECT_EQ(tagsOf(movie("alac", row.items)), expected) << row.name;
        platform().failures.clear();
    }
}

TEST_F(Mp4DecoderTest, TextThatIsToBeLongerThanTheRecordEndsWithIt) {
    // From the artist's text on, whose length the title runs over, to the record's end; then the
    // encoding.
    const std::string overLength = std::string(248, 'x') + test::word(1) + test::word(0x7FFFFFFF);
    const Lines found = tagsOf(movie("alac", item("\251nam", 1, overLength)));
    ASSERT_EQ(found.size(), 2U);
    EXPECT_EQ(found[1].size(),
              std::string_view("Artist=\"\"").size() + (2'362'132U - 808 - 16) + 2);
}

TEST_F(Mp4DecoderTest, OtherFilesGetNothingFromTheirAtoms) {
    EXPECT_EQ(tagsOf(movie("mp4a", kItems)), Lines{});
    EXPECT_EQ(tagsOf(""), Lines{});
    const test::TemporaryFile file(movie("alac", kItems));
    const auto decoder = openDecoder(file);
    std::filesystem::remove(file.path());
    EXPECT_EQ(tags(*decoder), Lines{});
}

}  // namespace
}  // namespace atdp
