// The item lists of MPEG-4 files.
#include <gtest/gtest.h>

#include "services/limits.h"
#include "tests/support/mpeg4_information.h"

namespace atdp::test {
namespace {

using services::TextMap;

TEST(Mpeg4Tags, ReadsTheItemList) {
    const std::string items = text("\251nam", "Título") + text("\251ART", "Who") +
                              text("\251alb", "Where") + text("\251gen", "Own") +
                              text("\251day", "2004-05-06T07:08:09Z") + text("\251cmt", "What") +
                              text("\251wrt", "Writer") + atom("covr", data(13, "\xFF\xD8")) +
                              atom("trkn", data(0, raw("\0\0\0\3\0\14\0\0")));
    const TextMap expected = {{"title", "Título"},    {"artist", "Who"},       {"album", "Where"},
                              {"genre", "Own"},       {"year", "2004"},        {"comments", "What"},
                              {"composer", "Writer"}, {"track number", "3/12"}};
    EXPECT_EQ(information(items), expected);
    EXPECT_EQ(information(items, false), expected);
}

TEST(Mpeg4Tags, ReadsEveryKindOfValue) {
    const struct {
        std::string items, name, text;
    } cases[] = {
        {atom("trkn", data(0, raw("\0\0\0\3\0\0"))), "track number", "3"},
        {atom("trkn", data(0, raw("\0\0\0\0\0\14"))), "track number", ""},
        {atom("trkn", data(0, raw("\0\0\0"))), "track number", ""},
        {text("trkn", "4/5"), "track number", "4/5"},
        {atom("trkn", data(21, raw("\0\7"))), "track number", "7"},
        {atom("gnre", data(0, raw("\0\22"))), "genre", "Rock"},
        {atom("gnre", data(0, raw("\0\0"))), "genre", ""},
        {atom("gnre", data(0, raw("\xFF\xFF"))), "genre", ""},
        {atom("\xA9nam", data(2, raw("\0S\0\xE3"))), "title", "Sã"},
        {atom("\xA9nam", data(0, "plain")), "title", "plain"},
        {atom("\xA9nam", data(1, "S\xE3o")), "title", "São"},
        {atom("\xA9nam", data(1, "A") + data(1, "B")), "title", "A; B"},
        {atom("\xA9nam", data(21, "\xFF")), "title", "-1"},
        {atom("\xA9nam", data(14, "picture")), "title", ""},
        {atom("\xA9nam", atom("name", "x") + data(1, "after")), "title", "after"},
        {text("\xA9nam", "first") + text("\xA9nam", "second"), "title", "first"},
        {atom("\xA9nam", atom("data", "shrt")), "title", ""},
        {text("\xA9nam", std::string(services::kMaxTagEntryBytes, 'x')), "title", ""},
    };
    for (const auto& expected : cases) {
        const TextMap found = information(expected.items);
        const auto entry = found.find(expected.name);
        EXPECT_EQ(entry == found.end() ? "" : entry->second, expected.text) << &expected - cases;
    }
}

}  // namespace
}  // namespace atdp::test
