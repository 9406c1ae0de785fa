// ID3 tags in chunks and the platform's information dictionary: which names are asked for.
#include "metadata/id3_tag.h"
#include "metadata/information_dictionary.h"
#include "tests/support/metadata_test.h"

namespace atdp {
namespace {

class Id3TagTest : public MetadataTest {
 protected:
    Lines read(MetadataList list = {}) const { return readFrom(checkID3v2Tag, std::move(list)); }
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

class InformationDictionaryTest : public MetadataTest {
 protected:
    Lines read(MetadataList list = {}) const {
        return readFrom(getAudioFilePropertyInfo, std::move(list));
    }
};

const Value kFull = dictionary({{"album", {"B"}},
                                {"track number", {"3/12"}},
                                {"title", {"T"}},
                                {"nominal bit rate", {"128000"}},
                                {"genre", {"G"}},
                                {"source bit depth", {"16"}},
                                {"artist", {"A"}}});

TEST_F(InformationDictionaryTest, SixKeysAreAddedInOrderWhereTheyAreMissing) {
    platform().information = kFull;
    EXPECT_EQ(read(), (Lines{"Artist=\"A\"", "Title=\"T\"", "SrcBits=\"16\"",
                             "SrcSampleRate=\"128000\"", "Album=\"B\"", "Track=3"}));
    EXPECT_EQ(read({{"Title", "own"}, {"SrcSampleRate", 44100.0F}, {"Track", "x"}}),
              (Lines{"Title=\"own\"", "SrcSampleRate=44100.000000", "Track=\"x\"", "Artist=\"A\"",
                     "SrcBits=\"16\"", "Album=\"B\""}));
}

TEST_F(InformationDictionaryTest, TrackIsTheIntegerBeforeTheSlash) {
    const std::pair<const char*, const char*> tracks[] = {
        {"7", "7"},
        {"7/12", "7"},
        {"/12", "0"},
        {"", "0"},
        {" \n+07th/12", "7"},
        {"-3", "-3"},
        {"+-3", "0"},
        {"- 3", "0"},
        {"A7", "0"},
        {"7.9", "7"},
        {"99999999999999999999", "9223372036854775807"},
        {"-99999999999999999999/3", "-9223372036854775808"}};
    for (const auto& [text, number] : tracks) {
        platform().information = dictionary({{"track number", {text}}});
        EXPECT_EQ(read(), Lines{std::string("Track=") + number}) << text;
    }
}

TEST_F(InformationDictionaryTest, WhatIsNotTextOrNotThereAddsNothing) {
    EXPECT_EQ(read(), Lines{});
    platform().information = dictionary({{"title", kFull}, {"track number", kFull}});
    EXPECT_EQ(read(), Lines{});
    platform().information = kFull;
    platform().failures["AudioFileGetProperty info"] = {-50};
    EXPECT_EQ(read(), Lines{});
}

}  // namespace
}  // namespace atdp
