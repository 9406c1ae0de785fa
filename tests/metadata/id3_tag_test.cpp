// ID3 tags in chunks: which are asked, and under which names.
#include "metadata/id3_tag.h"

#include "tests/support/metadata_test.h"

namespace atdp {
namespace {

class Id3TagTest : public MetadataTest {
 protected:
    Lines read(MetadataList list = {}) const {
        checkID3v2Tag(file_, list);
        return linesOf(list);
    }
};

const Value kFirst = dictionary({{"artist", {"A"}}, {"title", {"T"}}, {"album", {"L"}}});
const Value kSecond = dictionary({{"artist", {"B"}}, {"title", {"U"}}});

TEST_F(Id3TagTest, FirstNameInTheFirstTagCounts) {
    const Value nothing = dictionary({{"TALB", {"L"}}});
    const Value artist = dictionary({{"TPE1", {"C"}}});
    const Lines first = {"Title=\"T\"", "Artist=\"A\""};
    const std::tuple<const char*, std::vector<Value>, Lines> files[] = {
        {"no tag", {}, {}},
        {"descriptive names", {kFirst}, first},
        {"versions 2.3 and 2.4", {dictionary({{"TIT2", {"T"}}, {"TPE1", {"A"}}})}, first},
        {"version 2.2", {dictionary({{"TT2", {"T"}}, {"TP1", {"A"}}})}, first},
        {"2.2 after 2.3",
         {dictionary({{"TT2", {"U"}}, {"TIT2", {"T"}}, {"TP1", {"B"}}, {"TPE1", {"A"}}})},
         first},
        {"2.3 after the descriptive",
         {dictionary({{"TIT2", {"U"}}, {"title", {"T"}}, {"TPE1", {"B"}}, {"artist", {"A"}}})},
         first},
        {"not text",
         {dictionary({{"title", kFirst}, {"TIT2", {"U"}}, {"artist", {""}}})},
         {"Artist=\"\""}},
        {"nothing in it", {nothing}, {}},
        {"nothing in the first", {nothing, kFirst, kSecond}, first},
        {"one from each", {artist, kSecond}, {"Artist=\"C\"", "Title=\"U\""}},
        {"refused ones", {{}, kFirst, {}}, first},
    };
    for (const auto& [what, tags, lines] : files) {
        setTags(tags);
        EXPECT_EQ(read(), lines) << what;
    }
    setTags({kFirst});
    platform().calls.clear();
    EXPECT_EQ(read({{"Artist", "own"}}), (Lines{"Artist=\"own\"", "Title=\"T\""}));
    EXPECT_EQ(platform().calls.at(3), "AudioFormatGetProperty id3d tag 0 8");  // the whole tag
}

TEST_F(Id3TagTest, TagThatCannotBeReadIsPassedOver) {
    setTags({kFirst, kSecond});
    const Lines second = {"Title=\"U\"", "Artist=\"B\""};
    const std::pair<const char*, Lines> failures[] = {{"AudioFileCountUserData id3 ", {}},
                                                      {"AudioFileGetUserDataSize id3  0", second},
                                                      {"AudioFileGetUserData id3  0", second},
                                                      {"AudioFormatGetProperty id3d", {}}};
    for (const auto& [call, lines] : failures) {
        platform().failures = {{call, {kStatusIoError}}};
        EXPECT_EQ(read(), lines) << call;
    }
}

}  // namespace
}  // namespace atdp
