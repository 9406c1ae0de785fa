// What tags, sound and hostile ones, say.
#include <gtest/gtest.h>

#include "services/limits.h"
#include "tests/support/id3_builder.h"
#include "tests/support/tag_reading.h"

namespace atdp::test {
namespace {

using services::TextMap;

TEST(Id3v2, TakesTextInEveryEncodingAndVersion) {
    for (const int version : {2, 3, 4}) {
        SCOPED_TRACE(version);
        EXPECT_EQ(title(raw("\0S\xE3o"), version), "São");
        EXPECT_EQ(title(raw("\0S\xC3\xA3o"), version), "São");             // really UTF-8
        EXPECT_EQ(title(raw("\0\x93S\x94\x81"), version), "“S”\xC2\x81");  // really Windows-1252
        EXPECT_EQ(title(raw("\1\xFF\xFES\0\xE3\0"), version), "Sã");
        EXPECT_EQ(title(raw("\1\xFE\xFF\0S\0\xE3"), version), "Sã");
        EXPECT_EQ(title(raw("\1S\0\xE3\0"), version), "Sã");
        EXPECT_EQ(title(raw("\2\0S\0\xE3"), version), "Sã");
        EXPECT_EQ(title("\3\xEF\xBB\xBFSão", version), "São");
        EXPECT_EQ(title("\3S\xE3o", version), "São");
        EXPECT_EQ(title("\1\xFF\xFE" + utf16Little("long") + "x", version), "long");
        EXPECT_EQ(title(raw("\1\xFF\xFE\x3D\xD8\x00\xDE"), version), "😀");
        EXPECT_EQ(title(raw("\1\xFF\376A\0\x3D\330B\0"), version), "A\uFFFDB");
        EXPECT_EQ(title(raw("\2\xDE\x00\xD8\x3D"), version), "\uFFFD\uFFFD");
        EXPECT_EQ(title("\4none", version), "(absent)");
        EXPECT_EQ(title("\3", version), "(absent)");
    }
}

TEST(Id3v2, JoinsSeveralValuesAndNamesGenres) {
    EXPECT_EQ(title(raw("\3A\0B\0")), "A; B");
    EXPECT_EQ(title("\1\xFF\xFE" + utf16Little(raw("A\0B"))), "A; B");
    EXPECT_EQ(title(raw("\3A\0left over"), 3), "A");
    EXPECT_EQ(title("\003AC/DC", 3), "AC/DC");
    const auto genre = [](int version, const std::string& text) {
        const std::string name = version == 2 ? "TCO" : "TCON";
        return frameText(id3Tag(version, id3Frame(version, name, '\3' + text)), "TCON");
    };
    EXPECT_EQ(genre(2, "(17)"), "Rock");
    EXPECT_EQ(genre(3, "(17)(RX)Own"), "Rock; Remix; Own");
    EXPECT_EQ(genre(4, raw("17\0CR\0Own")), "Rock; Cover; Own");
    EXPECT_EQ(genre(4, "1990s"), "1990s");
    EXPECT_EQ(genre(4, "99999999999"), "99999999999");
}

TEST(Id3v2, UndoesWhatWritersDoToFrames) {
    const std::string content = raw("\1\xFF\xFES\0\xE3\0");
    for (const int version : {2, 3}) {
        const std::string name = version == 2 ? "TT2" : "TIT2";
        const std::string frame = id3Frame(version, name, content);
        EXPECT_EQ(frameText(id3Tag(version, unsynchronised(frame), 0x80)), "Sã");
    }
    EXPECT_EQ(title(unsynchronised(content), 4, 0x02), "Sã");
    EXPECT_EQ(title(unsynchronised(content), 4, 0, 0x80), "Sã");
    const std::string length = synchsafe(content.size());
    EXPECT_EQ(title(length + content, 4, 0x01), "Sã");
    EXPECT_EQ(title(length + compressed(content), 4, 0x09), "Sã");
    EXPECT_EQ(title("g" + length + unsynchronised(compressed(content)), 4, 0x4B), "Sã");
    EXPECT_EQ(title(bigEndian(std::uint32_t{7}) + compressed(content), 3, 0x80), "Sã");
    EXPECT_EQ(title("g" + content, 3, 0x20), "Sã");
    EXPECT_EQ(title("e" + content, 3, 0x40), "(absent)");

    const std::string frame3 = id3Frame(3, "TIT2", "\3Sã"), frame4 = id3Frame(4, "TIT2", "\3Sã");
    EXPECT_EQ(frameText(id3Tag(3, raw("\0\0\0\6......") + frame3, 0x40)), "Sã");
    EXPECT_EQ(frameText(id3Tag(4, raw("\0\0\0\6\1\0") + frame4, 0x40)), "Sã");
    const std::string withFooter = id3Tag(4, frame4, 0x10);
    EXPECT_EQ(frameText(withFooter), "(refused)");
    EXPECT_EQ(frameText(withFooter + "3DI" + withFooter.substr(3, 7)), "Sã");
    // Frames of 2.2 in a tag of 2.3, plain sizes in one of 2.4.
    EXPECT_EQ(frameText(id3Tag(3, id3Frame(3, raw("TT2\0"), "\3Sã"))), "Sã");
    const std::string longFrame = id3Frame(3, "TALB", '\3' + std::string(200, 'a'));
    EXPECT_EQ(frameText(id3Tag(4, longFrame + frame4)), "Sã");
}

TEST(Id3v2, KeepsCommentsByDescription) {
    const std::string gapless = " 00000000 00000840 000001CC 0000000000A6B0F4";
    const std::string wide = id3Frame(3, "COMM", "\1eng\xFF\xFE" + utf16Little(raw("d\0t")));
    const std::string tag = id3Tag(3, comment("iTunSMPB", gapless) + comment("", "fine") + wide +
                                          comment("", "second") + id3Frame(3, "TPE1", "\3Who"));
    EXPECT_EQ(frameText(tag, "TPE1"), "Who");
    for (const auto& [description, text] : TextMap{{"iTunSMPB", gapless}, {"", "fine"}, {"d", "t"}})
        EXPECT_EQ(commentText(tag, description), text);
    EXPECT_EQ(textOf(nullptr), nullptr);
    EXPECT_EQ(dictionaryOf(nullptr), nullptr);
    EXPECT_EQ(mpegInformation(tag)["comments"], "fine");
}

TEST(Id3v2, IsRefusedWhereNoWholeTagStands) {
    const std::string tag = id3Tag(4, id3Frame(4, "TIT2", "\3Title"));
    EXPECT_EQ(frameText(tag + "sound"), "Title");
    const auto changed = [&](std::size_t index, char value) {
        std::string bytes = tag;
        bytes[index] = value;
        return frameText(bytes);
    };
    const std::pair<std::size_t, char> changes[] = {
        {0, 'i'}, {3, 1}, {3, 5}, {3, '\xFF'}, {4, '\xFF'}, {6, '\x7F'}, {9, '\x80'}};
    for (const auto& [index, value] : changes) EXPECT_EQ(changed(index, value), "(refused)");
    for (std::size_t bytes = 0; bytes < tag.size(); ++bytes)
        EXPECT_EQ(frameText(tag.substr(0, bytes)), "(refused)");

    std::uint32_t size = 4;
    CFDictionaryRef made = nullptr;
    const auto bytes = static_cast<std::uint32_t>(tag.size());
    const auto get = [&](std::uint32_t property, const void* from, std::uint32_t* room) {
        return AudioFormatGetProperty(property, bytes, from, room, &made);
    };
    constexpr auto kProperty = kAudioFormatProperty_ID3TagToDictionary;
    EXPECT_EQ(get(kProperty, tag.data(), &size), kStatusWrongPropertySize);
    EXPECT_EQ(get(kProperty, nullptr, &size), kStatusInvalidParameter);
    EXPECT_EQ(AudioFormatGetProperty(kProperty, bytes, tag.data(), &size, nullptr),
              kStatusInvalidParameter);
    EXPECT_EQ(get(0, tag.data(), &size), kStatusUnknownProperty);
    EXPECT_EQ(made, nullptr);
}

TEST(Id3v2, StaysSmallWhateverFramesClaim) {
    const std::string last = id3Frame(4, "TIT2", "\3Title");
    const auto titleAfter = [&](const std::string& frames) {
        return frameText(id3Tag(4, frames + last));
    };
    const std::string bomb = compressed('\3' + std::string(64 << 20, 'A'));
    EXPECT_EQ(titleAfter(id3Frame(4, "TALB", synchsafe(10) + bomb, 9)), "Title");
    EXPECT_EQ(titleAfter(id3Frame(4, "TALB", synchsafe((64 << 20) + 1) + bomb, 9)), "Title");
    std::string nested;
    for (std::size_t depth = 20'000; depth-- > 0;)
        nested += "CHAP" + synchsafe(18 + 28 * depth) + raw("\0\0c\0") + std::string(16, '\0');
    EXPECT_EQ(titleAfter(nested), "Title");
    const std::string longText(services::kMaxTagEntryBytes, 'a');
    EXPECT_EQ(titleAfter(id3Frame(4, "TALB", '\3' + longText)), "Title");
    std::string genres = "\3";
    while (genres.size() < services::kMaxGenreBytes - 4) genres += "(17)";
    EXPECT_EQ(frameText(id3Tag(4, id3Frame(4, "TCON", genres)), "TCON").substr(0, 4), "Rock");
    std::string albums, comments;
    for (std::size_t i = 0; i < services::kMaxTagEntries; ++i) {
        albums += id3Frame(4, "TALB", "\3x");
        comments += id3Frame(4, "COMM", raw("\3eng\0x"));
    }
    EXPECT_EQ(titleAfter(albums), "Title");
    EXPECT_EQ(titleAfter(comments), "(absent)");
    for (const int size : {0x0FFFFFFF, 0x0FFFFFF, 20})
        EXPECT_EQ(title("\3" + synchsafe(static_cast<std::size_t>(size)), 4, 9), "(absent)");
}

TEST(Information, TakesEachEntryFromTheFirstTagThatHasIt) {
    const std::string id3v2 =
        id3Tag(3, id3Frame(3, "TIT2", "\3New") + id3Frame(3, "TRCK", "\0033/12"));
    const std::string second =
        id3Tag(4, id3Frame(4, "TIT2", "\3Not") + id3Frame(4, "TCOM", "\3Who"));
    const std::string ape = apeTag(apeItem("TITLE", "Ape") + apeItem("artist", raw("A\0B")) +
                                   apeItem("Album", "binary", 2) + apeItem("Year", "2004-05-06"));
    const std::string old = id3v1Tag("Old", "Old", 7);
    const TextMap all = {{"title", "New"},   {"track number", "3/12"}, {"composer", "Who"},
                         {"artist", "A; B"}, {"year", "2004"},         {"genre", "Rock"}};
    EXPECT_EQ(mpegInformation(id3v2 + second + "sound" + ape + old), all);
    EXPECT_EQ(mpegInformation("sound" + ape)["title"], "Ape");
    const TextMap oldest = {{"title", "Old"},
                            {"artist", "Old"},
                            {"year", "1987"},
                            {"track number", "7"},
                            {"genre", "Rock"}};
    EXPECT_EQ(mpegInformation("sound" + old), oldest);
    EXPECT_EQ(mpegInformation("sound"), TextMap{});
    EXPECT_EQ(mpegInformation(id3Tag(3, id3Frame(3, "TYER", "\0031999")))["year"], "1999");
    EXPECT_EQ(mpegInformation(id3Tag(4, id3Frame(4, "TDRC", "\3平成元年")))["year"], "平成元年");
}

TEST(Information, GuessesTheEncodingOfOldTags) {
    EXPECT_EQ(mpegInformation(id3v1Tag("Gar\xE7on \x80   "))["title"], "Garçon €");
    EXPECT_EQ(mpegInformation(id3v1Tag("Garçon"))["title"], "Garçon");
    EXPECT_EQ(mpegInformation(id3v1Tag("\xED\xA0\x80"))["title"], "í\u00A0€");  // no valid UTF-8
    EXPECT_EQ(mpegInformation(id3v1Tag("\xC0\xAF"))["title"], "À¯");
}

TEST(Information, BelievesNoSize) {
    std::string claim = id3Tag(4, id3Frame(4, "TIT2", "\3Title") + std::string(1000, '\0'));
    claim.replace(6, 4, synchsafe(0x0FFFFFFF));
    EXPECT_EQ(mpegInformation(claim)["title"], "Title");
    EXPECT_EQ(mpegInformation(apeTag(apeItem("Title", "Ape"), 0xFFFFFFFF))["title"], "Ape");
    std::string ape = apeTag(apeItem("Title", "Ape"));
    ape.replace(ape.size() - 20, 4, "\xFF\xFF\xFF\xFF");
    EXPECT_EQ(mpegInformation(ape), TextMap{});
    EXPECT_EQ(mpegInformation(apeTag("\xFF\xFF\xFF\xFF" + apeItem("Title", "Ape"))), TextMap{});
    // An APE tag of such a size that its mark stands where ID3v1 has its own.
    std::string tag = apeTag(apeItem("Title", std::string(99 - 32 - 14, 'a')));
    EXPECT_EQ(mpegInformation("APETAGEX" + std::string(24, '\0') + tag).size(), 1U);
}

}  // namespace
}  // namespace atdp::test
