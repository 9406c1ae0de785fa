// The platform's information dictionary as a source of the metadata list.
#include "metadata/information_dictionary.h"

#include "tests/support/metadata_test.h"

namespace atdp {
namespace {

class InformationDictionaryTest : public MetadataTest {
 protected:
    Lines read(MetadataList list = {}) const {
        getAudioFilePropertyInfo(file_, list);
        return linesOf(list);
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
