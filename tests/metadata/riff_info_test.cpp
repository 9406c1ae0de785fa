// INFO lists: how a sub-chunk is found, and what becomes of its text.
#include "tests/support/riff_info_test.h"
#include "tests/support/byte_builder.h"
#include "tests/support/failing_malloc.h"

namespace atdp {
namespace {

using namespace std::string_literals;
using test::infoList;
using test::riffChunk;
using test::riffHeader;

TEST(FindChunk, StepsFromHeaderToHeaderInsideTheBytes) {
    const std::string name = riffChunk("INAM", "b");
    const std::tuple<const char*, std::string, std::ptrdiff_t> searches[] = {
        {"nothing", "", -1},
        {"less than a header", riffHeader("INAM", 0).substr(0, 7), -1},
        {"a header alone", riffHeader("INAM", 0), 0},
        {"data to the end", riffHeader("INAM", 4) + "text", 0},
        {"data beyond the end", riffHeader("INAM", 5) + "text", -1},
        {"odd data to the end", riffHeader("INAM", 5) + "texts", 0},
        {"first of two", riffChunk("INAM", "a") + name, 0},
        {"after a header alone", riffHeader("IART", 0) + name, 8},
        {"after even data", riffChunk("IART", "text") + name, 12},
        {"after odd data", riffChunk("IART", "texts") + name, 14},
        {"after odd data without a pad", riffHeader("IART", 5) + "texts" + riffHeader("INAM", 0),
         -1},
        {"less than a header after another", riffChunk("IART", "") + name.substr(0, 7), -1},
        {"other to the end without its pad", riffHeader("IART", 5) + "texts", -1},
        {"in another's data", riffChunk("ICMT", name), -1},
        {"other byte order", riffChunk("MANI", "a"), -1},
        {"overrun of a match", riffHeader("INAM", 100) + name, -1},
        {"overrun of another", riffHeader("IART", 100) + name, -1},
        {"greatest size of a match", riffHeader("INAM", 0xFFFFFFFF) + name, -1},
        {"greatest size of another", riffHeader("IART", 0xFFFFFFFF) + name, -1},
        {"step of 2^32", riffHeader("IART", 0xFFFFFFF8) + name, -1},
    };
    for (const auto& [what, bytes, offset] : searches)
        EXPECT_EQ(offsetOfName(bytes, bytes.size()), offset) << what;
    const std::string second = riffChunk("IART", "text") + name;
    for (const std::size_t available : {0U, 7U, 8U, 12U, 19U, 20U})
        EXPECT_EQ(offsetOfName(second, available), -1) << "of which there are " << available;
}

TEST_F(RiffInfoTest, FirstListWithATextSuppliesIt) {
    const std::string full = infoList("T\0"s, "Art\0"s);
    const Lines both = {"Title=\"T\"", "Artist=\"Art\""};
    const std::tuple<const char*, std::vector<std::string>, Lines> files[] = {
        {"no list", {}, {}},
        {"both", {full}, both},
        {"odd sizes", {infoList("Title", "A\0\0"s)}, {"Title=\"Title\"", "Artist=\"A\""}},
        {"NUL inside", {infoList("T\0X\0"s, "\0A"s)}, {"Title=\"T\"", "Artist=\"\""}},
        {"no data", {"INFO" + riffChunk("INAM", "")}, {"Title=\"\""}},
        {"short lists",
         {"", "INF", "INFO", "INFO" + riffHeader("INAM", 0).substr(0, 7), full},
         both},
        {"another type", {"adtl" + full.substr(4), "info" + full.substr(4)}, {}},
        {"another type before",
         {"adtl" + full.substr(4), infoList("U", "B"), full},
         {"Title=\"U\"", "Artist=\"B\""}},
        {"overrun",
         {"INFO" + riffChunk("IART", "B") + riffHeader("INAM", 3) + "UV", full},
         {"Artist=\"B\"", "Title=\"T\""}},
        {"one from each",
         {"INFO" + riffChunk("IART", "B"), "INFO" + riffChunk("INAM", "U"), full},
         {"Artist=\"B\"", "Title=\"U\""}},
    };
    for (const auto& [what, items, lines] : files) {
        lists = items;
        EXPECT_EQ(read(), lines) << what;
    }
    EXPECT_EQ(read({{"Title", "own"}}), (Lines{"Title=\"own\"", "Artist=\"B\""}));
}

TEST_F(RiffInfoTest, EncodingIsThatOfAllTheData) {
    lists = {infoList("caf\x8E\0x\0"s, "A\0"s)};
    platform().estimates["caf\x8E\0x\0"s] = NSMacOSRomanStringEncoding;
    EXPECT_EQ(read(), (Lines{"Title=\"caf\x8E 30\"", "Artist=\"A\""}));
    platform().calls.erase(platform().calls.begin(), platform().calls.begin() + 3);
    EXPECT_EQ(platform().calls,
              (Lines{"estimateStringEncoding caf\x8E\0x\0"s, "stringWithBytes caf\x8E 30",
                     "estimateStringEncoding A\0"s, "stringWithBytes A 4"}));
    platform().failures["stringWithBytes"] = {-50, 1};
    EXPECT_EQ(read(), Lines{"Title=\"caf\x8E 30\""});
}

TEST_F(RiffInfoTest, ListThatCannotBeReadIsPassedOver) {
    lists = {infoList("T", "A"), infoList("U", "B")};
    const Lines second = {"Title=\"U\"", "Artist=\"B\""};
    const std::pair<const char*, Lines> failures[] = {{"AudioFileCountUserData LIST", {}},
                                                      {"AudioFileGetUserDataSize LIST 0", second},
                                                      {"AudioFileGetUserData LIST 0", second}};
    for (const auto& [call, lines] : failures) {
        platform().failures = {{call, {kStatusIoError}}};
        EXPECT_EQ(read(), lines) << call;
    }
    platform().failures.clear();
    platform().returnedSize["AudioFileGetUserDataSize LIST 0"] = 0xFFFFFFFF;
    const scripted::FailingMalloc noMemory(1 << 20);
    EXPECT_EQ(read(), second);
}

TEST_F(RiffInfoTest, OnlyBytesThatWereReadCount) {
    lists = {infoList("T", "A"), infoList("U", "B")};
    const Lines first = {"Title=\"T\"", "Artist=\"A\""};
    platform().returnedSize["AudioFileGetUserDataSize LIST 0"] = 1 << 20;
    EXPECT_EQ(read(), first);
    platform().returnedSize = {{"AudioFileGetUserData LIST 0", 1000}};
    EXPECT_EQ(read(), first);
    platform().returnedSize = {{"AudioFileGetUserData LIST 0", 22}};
    EXPECT_EQ(read(), (Lines{"Artist=\"A\"", "Title=\"U\""}));
}

}  // namespace
}  // namespace atdp
