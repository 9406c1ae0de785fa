// What bytes say in each encoding, which bytes an encoding refuses, and what is guessed.
#include <gtest/gtest.h>

#include <bit>
#include <vector>

#include "tests/support/encoded_text.h"

namespace atdp::test {
namespace {

using namespace std::string_literals;

TEST(StringEncoding, KeepsAsciiNulsAndNothing) {
    const std::string ascii = "A\0~"s + bytesFromTo(0x01, 0x1A) + bytesFromTo(0x1C, 0x5B);
    for (const NSStringEncoding encoding : kEncodings) {
        EXPECT_EQ(text("", encoding), "") << encoding;
        if (encoding != NSUnicodeStringEncoding && encoding != NSUTF16BigEndianStringEncoding) {
            EXPECT_EQ(text(ascii, encoding), ascii) << encoding;
        }
    }
    EXPECT_EQ(text("", 2), "(refused)");  // no encoding that is known
    EXPECT_EQ(text("a", 0), "(refused)");
}

TEST(StringEncoding, KnowsWhichBytesEachEncodingLeavesUndefined) {
    const std::string high = bytesFromTo(0x80, 0xFF);
    EXPECT_EQ(bytesRefused(NSASCIIStringEncoding), high);
    EXPECT_EQ(bytesRefused(NSUTF8StringEncoding), high);
    EXPECT_EQ(bytesRefused(NSNonLossyASCIIStringEncoding), "\\" + high);
    EXPECT_EQ(bytesRefused(NSISO2022JPStringEncoding), "\x1B" + high);
    EXPECT_EQ(bytesRefused(NSJapaneseEUCStringEncoding), high);
    EXPECT_EQ(bytesRefused(NSShiftJISStringEncoding),
              bytesFromTo(0x80, 0xA0) + bytesFromTo(0xE0, 0xFF));
    EXPECT_EQ(bytesRefused(NSMacOSRomanStringEncoding), "");
    EXPECT_EQ(bytesRefused(NSISOLatin1StringEncoding), "");
    EXPECT_EQ(bytesRefused(NSWindowsCP1250StringEncoding), "\x81\x83\x88\x90\x98");
    EXPECT_EQ(bytesRefused(NSWindowsCP1251StringEncoding), "\x98");
    EXPECT_EQ(bytesRefused(NSWindowsCP1252StringEncoding), "\x81\x8D\x8F\x90\x9D");
    EXPECT_EQ(bytesRefused(NSWindowsCP1253StringEncoding),
              "\x81\x88\x8A\x8C\x8D\x8E\x8F\x90\x98\x9A\x9C\x9D\x9E\x9F\xAA\xD2\xFF");
    EXPECT_EQ(bytesRefused(NSWindowsCP1254StringEncoding), "\x81\x8D\x8E\x8F\x90\x9D\x9E");
    EXPECT_EQ(bytesRefused(NSUnicodeStringEncoding).size(), 256U);
    EXPECT_EQ(bytesRefused(NSUTF16BigEndianStringEncoding).size(), 256U);
}

TEST(StringEncoding, ReadsEncodingsOfOneByteACharacter) {
    EXPECT_EQ(text("Caf\xE9 \x80\xFF", NSISOLatin1StringEncoding), "Café \u0080ÿ");
    EXPECT_EQ(text("\x80\x8E\xBD\xC6\xCA\xDB\xF0\xFF", NSMacOSRomanStringEncoding),
              "ÄéΩ∆\u00A0€\uF8FFˇ");
    EXPECT_EQ(text("\x80\x8A\x9F\xA1\xE9", NSWindowsCP1252StringEncoding), "€ŠŸ¡é");
    EXPECT_EQ(text("\x80\x8A\xA1\xE8", NSWindowsCP1250StringEncoding), "€Šˇč");
    EXPECT_EQ(text("\xCC\xE8\xF0", NSWindowsCP1251StringEncoding), "Мир");
    EXPECT_EQ(text("\xC1\xE1\xFE", NSWindowsCP1253StringEncoding), "Ααώ");
    EXPECT_EQ(text("\xD0\xDD\xFE", NSWindowsCP1254StringEncoding), "Ğİş");
}

TEST(StringEncoding, TakesOnlyValidUtf8) {
    const std::string valid = "a\0é€\U0001F600\uFFFF\U0010FFFF"s;
    EXPECT_EQ(text(valid, NSUTF8StringEncoding), valid);
    EXPECT_EQ(text("\xEF\xBB\xBFmarked", NSUTF8StringEncoding), "marked");
    for (const char* const bytes :
         {"\xC0\xAF", "\xC1\xBF", "\xE0\x9F\xBF", "\xF0\x8F\xBF\xBF", "\xED\xA0\x80",
          "\xED\xBF\xBF", "\xF4\x90\x80\x80", "\xF5\x80\x80\x80", "\xC3", "\xE2\x82",
          "\xF0\x9F\x98", "\xC3(", "\xE2\x82(", "a\x80", "\xFE", "\xFF\xFE"})
        EXPECT_EQ(text(bytes, NSUTF8StringEncoding), "(refused)");
}

TEST(StringEncoding, TakesOnlyWholeUtf16) {
    const std::string big = "\0e\0\0\xD8\x3D\xDE\0"s;
    const std::string little = "e\0\0\0\x3D\xD8\0\xDE"s;
    const std::string expected = "e\0😀"s;
    EXPECT_EQ(text(big, NSUTF16BigEndianStringEncoding), expected);
    EXPECT_EQ(text("\xFE\xFF" + big, NSUTF16BigEndianStringEncoding), expected);
    EXPECT_EQ(text("\xFE\xFF" + big, NSUnicodeStringEncoding), expected);
    EXPECT_EQ(text("\xFF\xFE" + little, NSUnicodeStringEncoding), expected);
    constexpr bool kBig = std::endian::native == std::endian::big;
    EXPECT_EQ(text(kBig ? big : little, NSUnicodeStringEncoding), expected);
    EXPECT_EQ(text("\xFE\xFF\xFE\xFF"s, NSUnicodeStringEncoding), "\uFEFF");  // one is the mark
    EXPECT_EQ(text("\xFF\xFE", NSUnicodeStringEncoding), "");
    for (const std::string& bytes :
         {"\0"s, "\0a\0"s, "\xD8\x3D"s, "\xDE\0"s, "\xD8\x3D\0a"s, "\xD8\x3D\xD8\x3D"s,
          "\xDE\0\xD8\x3D"s, "\0a\xD8\x3D"s, "\xD8\x3D\xDE"s}) {
        EXPECT_EQ(text(bytes, NSUTF16BigEndianStringEncoding), "(refused)");
        EXPECT_EQ(text("\xFE\xFF" + bytes, NSUnicodeStringEncoding), "(refused)");
    }
}

TEST(StringEncoding, ReadsEscapesOfNonLossyAscii) {
    constexpr auto kEncoding = NSNonLossyASCIIStringEncoding;
    EXPECT_EQ(text(R"(Caf\351 \\ \u20ac\u20AC \ud83d\ude00 \101\377\\351)", kEncoding),
              "Café \\ €€ 😀 Aÿ\\351");
    for (const char* const bytes :
         {R"(\)", R"(a\n)", R"(\35)", R"(\400)", R"(\389)", R"(\u20a)", R"(\u20ag)", R"(\u)",
          R"(\U20ac)", R"(\u-123)", R"(\u 123)", R"(\x41)", R"(\ud83d)", R"(\ude00)", R"(\ud83da)",
          "\xE9", "\\\xE9"})
        EXPECT_EQ(text(bytes, kEncoding), "(refused)") << bytes;
}

TEST(StringEncoding, ReadsShiftJisAsWindowsHasIt) {
    constexpr auto kEncoding = NSShiftJISStringEncoding;
    EXPECT_EQ(text("\x93\xFA\x96{\x8C\xEA \x83\\", kEncoding), "日本語 ソ");
    EXPECT_EQ(text("\xB1\xA1\xDF", kEncoding), "ｱ｡ﾟ");
    EXPECT_EQ(text("\x87\x40\xED\x40\xFA\x40\xFC\x4B\x81\x60", kEncoding), "①纊ⅰ黑～");
    for (const char* const bytes : {"\x93", "\x93\x20", "\x93\x7F", "\x93\xFD", "\x85\x40",
                                    "\xFC\x4C", "\x80\x40", "\xA0\x40", "\xFD\x40", "a\xFF"})
        EXPECT_EQ(text(bytes, kEncoding), "(refused)");
}

TEST(StringEncoding, ReadsEucJpWithItsShifts) {
    constexpr auto kEncoding = NSJapaneseEUCStringEncoding;
    EXPECT_EQ(text("\xC6\xFC\xCB\xDC\xB8\xEC \x8E\xB1 \x8F\xA2\xAF", kEncoding), "日本語 ｱ ˘");
    for (int byte = 0x80; byte < 0xA0; ++byte)
        EXPECT_EQ(text("a" + std::string(1, static_cast<char>(byte)) + "a", kEncoding),
                  "(refused)");
    for (const char* const bytes : {"\xC6", "\xC6\x41", "\xC6\xA0", "\xC6\xFF", "\x8E", "\x8E\xE0",
                                    "\x8F", "\x8F\xA2", "\x8F\xA1\xA1", "\xA9\xA1"})
        EXPECT_EQ(text(bytes, kEncoding), "(refused)");
}

TEST(StringEncoding, ReadsIso2022Jp) {
    constexpr auto kEncoding = NSISO2022JPStringEncoding;
    EXPECT_EQ(text("a \x1B$BF|K\\8l\x1B(B z", kEncoding), "a 日本語 z");
    EXPECT_EQ(text("\x1B$@F|\x1B(J\\~", kEncoding), "日¥‾");
    EXPECT_EQ(text("\x1B(I1\x1B(B", kEncoding), "ｱ");
    EXPECT_EQ(text("\x1B$BF|", kEncoding), "日");  // writers forget to go back to ASCII
    for (const char* const bytes : {"\x1B", "\x1B$", "\x1B[0m", "\x1B(Z", "\x1B$BF", "\x1B$BF|K",
                                    "\x1B$BF|\x1B(B\xE9", "\x1B$B-!", "\x1B(H", "\xC6\xFC"})
        EXPECT_EQ(text(bytes, kEncoding), "(refused)");
}

TEST(StringEncoding, TakesTextOfAnyLengthWholeOrNotAtAll) {
    constexpr std::size_t kCharacters = 1'000'000;
    const std::string bytes(kCharacters, '\xB1'), kana(kCharacters, '1');
    std::string expected;
    for (std::size_t i = 0; i < kCharacters; ++i) expected += "ｱ";
    EXPECT_TRUE(text(bytes, NSShiftJISStringEncoding) == expected);
    EXPECT_TRUE(text("\x1B(I" + kana, NSISO2022JPStringEncoding) == expected);
    EXPECT_EQ(text(bytes + "\xFF", NSShiftJISStringEncoding), "(refused)");
    EXPECT_EQ(guess(bytes + "\xFF"), NSMacOSRomanStringEncoding);
    EXPECT_EQ(guess(bytes), NSShiftJISStringEncoding);
}

TEST(StringEncoding, IsGuessedInAFixedOrder) {
    const std::vector<std::pair<std::string, NSStringEncoding>> cases = {
        {"", NSUTF8StringEncoding},
        {"Title\0"s, NSUTF8StringEncoding},
        {R"(\351 \u20ac)", NSUTF8StringEncoding},
        {"日本語", NSUTF8StringEncoding},
        {"\xC2\xB1", NSUTF8StringEncoding},  // Shift JIS too
        {"\x1B$BF|K\\8l\x1B(B", NSISO2022JPStringEncoding},
        {"a\x1B(B", NSISO2022JPStringEncoding},       // UTF-8 too
        {"\x1B[0mCafé\x1B", NSUTF8StringEncoding},    // an escape that means nothing
        {"\x1B$BF|\x1B(B é", NSUTF8StringEncoding},   // never with bytes above ASCII
        {"\x1B \x93\xFA", NSShiftJISStringEncoding},  // an escape before every other encoding
        {"\x1B \xE9", NSMacOSRomanStringEncoding},
        {"\x93\xFA\x96{\x8C\xEA", NSShiftJISStringEncoding},
        {"\xA4\xA2", NSShiftJISStringEncoding},  // EUC-JP too: half-width katakana come first
        {"\xB1", NSShiftJISStringEncoding},
        {"\xC6\xFC\xCB\xDC\xB8\xEC", NSJapaneseEUCStringEncoding},  // Windows-1252 too
        {"\xC6\xFC\xCB\xDC\xB8\xEC\x80", NSMacOSRomanStringEncoding},
        {"Caf\xE9", NSMacOSRomanStringEncoding},  // and everything after it
        {"\xFF\xFE"
         "a\0"s,
         NSMacOSRomanStringEncoding}};
    for (const auto& [bytes, encoding] : cases) EXPECT_EQ(guess(bytes), encoding) << bytes;
    EXPECT_EQ(text("Caf\xE9", guess("Caf\xE9")), "CafÈ");
}

}  // namespace
}  // namespace atdp::test
