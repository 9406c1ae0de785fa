// The gapless comment: where it is looked for, and what its text means.
#include "tests/support/gapless_comment_test.h"
#include "tests/support/failing_malloc.h"

namespace atdp {
namespace {

TEST_F(GaplessCommentTest, TextGivesValidFramesPrimingAndRemainder) {
    const std::pair<const char*, const char*> texts[] = {
        {" 00000000 00000840 000001CC 0000000000A6B0F4 00000000 00000000", "10924276 2112 460"},
        {"0 840 1cc a6b0f4", "10924276 2112 460"},
        {"\t \u00A0\u3000zz 1 2 3 \t\u2009", "3 1 2"},
        {"0 0x1 0X2 0x3", "3 1 2"},
        {"0 1g 2\t 3.5", "3 1 2"},
        {"0 \n1 \u00A02 \u20283", "3 1 2"},
        {"0 000000000000000000000001 2 3", "3 1 2"},
        {"0 FFFFFFFF 80000000 FFFFFFFFFFFFFFFF", "-1 -1 -2147483648"},
        {"0 100000000 1FFFFFFFFFFFFFFFFF 10000000000000000", "-1 -1 -1"},
        {"0 1 2 7fffffffffffffff", "9223372036854775807 1 2"},
        {"0 1 2", "none"},
        {"0 1 2 ", "none"},
        {"", "none"},
        {"0  1 2 3", "none"},
        {"0 1  2 3", "none"},
        {"0 1 2  3", "none"},
        {"0 1 2 3\n", "3 1 2"},
        {"0 1 2 zz", "none"},
        {"0 zz 2 3", "none"},
        {"0 1 -2 3", "none"},
        {"0 1 2 0x", "none"},
        {"0\t1\t2\t3", "none"}};
    for (const auto& [text, counts] : texts) {
        platform().tag = scripted::gaplessTag(text);
        EXPECT_EQ(read(), counts) << text;
    }
}

TEST_F(GaplessCommentTest, IsFoundUnderTheFirstOfThreeNames) {
    const Value comments = scripted::gaplessTag("0 1 2 3").entries[0].value;
    const Value others = scripted::gaplessTag("0 4 5 6").entries[0].value;
    const Value comment = comments.entries[0].value;
    const std::pair<Value, const char*> tags[] = {
        {dictionary({{"COMM", comments}}), "3 1 2"},
        {dictionary({{"COM", comments}}), "3 1 2"},
        {dictionary({{"COM", others}, {"COMM", comments}}), "3 1 2"},
        {dictionary({{"COMM", others}, {"comments", comments}}), "3 1 2"},
        {dictionary({{"comments", dictionary({})}, {"COMM", comments}}), "none"},
        {dictionary({{"comments", {"0 1 2 3"}}, {"COMM", comments}}), "none"},
        {dictionary({{"comment", comments}}), "none"},
        {dictionary({{"comments", dictionary({{"iTunNORM", comment}})}}), "none"},
        {dictionary({{"comments", dictionary({{"iTunSMPB", {"0 1 2 3"}}})}}), "none"},
        {dictionary({{"comments", dictionary({{"iTunSMPB", comments}})}}), "none"},
        {dictionary({{"comments", dictionary({{"iTunSMPB", dictionary({{"text", comments}})}})}}),
         "none"},
    };
    for (const auto& [tag, counts] : tags) {
        platform().tag = tag;
        EXPECT_EQ(read(), counts) << &tag - &tags->first;
    }
}

TEST_F(GaplessCommentTest, FailuresAreSilent) {
    for (const char* call : {"AudioFileGetPropertyInfo id3t", "AudioFileGetProperty id3t",
                             "AudioFormatGetProperty id3d"}) {
        platform().failures = {{call, {kStatusDamagedFile}}};
        platform().calls.clear();
        EXPECT_EQ(read(), "none");
        EXPECT_EQ(platform().calls.back().find(call), 0U) << call;
    }
    EXPECT_EQ(platform().log, Lines{});
}

TEST_F(GaplessCommentTest, SizesThatThePlatformStatesAreOnlyRoom) {
    platform().returnedSize["AudioFileGetPropertyInfo id3t"] = 1 << 20;
    EXPECT_EQ(read(), "3 1 2");
    EXPECT_EQ(platform().calls[2], "AudioFormatGetProperty id3d ID3 tag 8");
    platform().returnedSize["AudioFileGetPropertyInfo id3t"] = 3;
    platform().returnedSize["AudioFileGetProperty id3t"] = 1000;
    EXPECT_EQ(read(), "3 1 2");
    EXPECT_EQ(platform().calls[6], "AudioFormatGetProperty id3d ID3 8");
    platform().returnedSize["AudioFileGetPropertyInfo id3t"] = 1 << 20;
    const scripted::FailingMalloc noMemory(1 << 20);
    EXPECT_EQ(read(), "none");
}

}  // namespace
}  // namespace atdp
