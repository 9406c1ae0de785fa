// The platform's information dictionary as a source of the metadata list.
#include "metadata/information_dictionary.h"

#include "tests/support/scripted_test.h"

namespace atdp {
namespace {

using scripted::Lines;
using scripted::platform;
using scripted::Value;

class InformationDictionaryTest : public scripted::ScriptedTest {
 protected:
    InformationDictionaryTest() {
        AudioFileOpenURL(CFURLCreateFromFileSystemRepresentation(nullptr, nullptr, 0, false),
                         kAudioFileReadPermission, 0, &file_);
        leftOpen = {"url 1", "file 1"};
    }

    Lines appendedTo(MetadataList list) const {
        const auto before = static_cast<std::ptrdiff_t>(list.size());
        getAudioFilePropertyInfo(file_, list);
        Lines lines;
        for (auto entry = list.begin() + before; entry != list.end(); ++entry) {
            const auto* text = std::get_if<std::string>(&entry->value);
            lines.push_back(
                entry->key + '=' +
                (text ? '"' + *text + '"' : std::to_string(std::get<std::int64_t>(entry->value))));
        }
        return lines;
    }

    AudioFileID file_ = nullptr;
};

const Value kFull{std::nullopt,
                  {{"album", {"B"}},
                   {"track number", {"3/12"}},
                   {"title", {"T"}},
                   {"nominal bit rate", {"128000"}},
                   {"genre", {"G"}},
                   {"source bit depth", {"16"}},
                   {"artist", {"A"}}}};

TEST_F(InformationDictionaryTest, SixKeysAreAddedInOrderWhereTheyAreMissing) {
    platform().information = kFull;
    EXPECT_EQ(appendedTo({}), (Lines{"Artist=\"A\"", "Title=\"T\"", "SrcBits=\"16\"",
                                     "SrcSampleRate=\"128000\"", "Album=\"B\"", "Track=3"}));
    EXPECT_EQ(appendedTo({{"Title", "own"}, {"SrcSampleRate", 44100.0F}, {"Track", "x"}}),
              (Lines{"Artist=\"A\"", "SrcBits=\"16\"", "Album=\"B\""}));
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
        {"-99999999999999999999/3", "-9223372036854775808"},
    };
    for (const auto& [text, number] : tracks) {
        platform().information = Value{std::nullopt, {{"track number", {text}}}};
        EXPECT_EQ(appendedTo({}), Lines{std::string("Track=") + number}) << text;
    }
}

TEST_F(InformationDictionaryTest, WhatIsNotTextOrNotThereAddsNothing) {
    EXPECT_EQ(appendedTo({}), Lines{});
    platform().information = Value{std::nullopt, {{"title", kFull}, {"track number", kFull}}};
    EXPECT_EQ(appendedTo({}), Lines{});
    platform().information = kFull;
    platform().failures["AudioFileGetProperty info"] = {-50};
    EXPECT_EQ(appendedTo({}), Lines{});
}

}  // namespace
}  // namespace atdp
