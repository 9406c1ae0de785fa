// The walk over the atom tree of files built in memory.
#include <algorithm>

#include "tests/support/m4a_record_test.h"

namespace atdp {
namespace {

using test::atom;
using test::atomOfSize;
using test::movie;
using test::word;

TEST(AtomWalk, TopLevel) {
    const std::string moov = atom("moov", atom("trak"));
    const std::string fill(262'144 - 24, '\0');
    const struct {
        const char* name;
        std::string bytes;
        const char* found;
    } rows[] = {
        {"empty", "", ""},
        {"cut header", moov.substr(0, 7), ""},
        {"moov behind mdat", atom("ftyp", word(1) + word(2)) + atom("mdat", "xyz") + moov,
         "ftyp 1 moov 1 trak 1"},
        {"two moovs", moov + atom("free") + moov, "moov 2 trak 2"},
        {"free of size 0", atomOfSize(0, "free", moov), ""},
        {"mdat of size 1", atomOfSize(1, "mdat", moov), ""},
        {"wide of size 7", atomOfSize(7, "wide", moov), ""},
        {"skip beyond the end", atomOfSize(0xFFFFFFFF, "skip", moov), ""},
        {"inside an unknown atom", atom("moof", moov), "moov 1 trak 1"},
        {"out of step in an unknown atom", atom("uuid", "1234") + moov, ""},
        {"moov fills the buffer", atom("moov", atom("trak") + atom("free", fill)), "moov 1 trak 1"},
        {"moov one byte too large", atom("moov", atom("trak") + atom("free", fill + 'x')),
         "moov 1"},
        {"moov cut", moov.substr(0, 15), "moov 1"},
        {"moov of size 7", atomOfSize(7, "moov", atom("trak") + moov), "moov 1"},
        {"ftyp of size 0", atomOfSize(0, "ftyp", moov), "ftyp 1"},
        {"ftyp too large", atom("ftyp", fill + std::string(17, 'x')) + moov, "ftyp 1"},
    };
    for (const auto& row : rows) EXPECT_EQ(found(row.bytes), row.found) << row.name;
}

TEST(AtomWalk, Children) {
    const struct {
        const char* name;
        std::string body;  // of moov
        const char* found;
    } rows[] = {
        {"nested", atom("trak", atom("mdia")) + atom("stsd"), "moov 1 trak 1 mdia 1 stsd 1"},
        {"size 0 is the rest", atomOfSize(0, "trak", atom("mdia") + atom("mdia")),
         "moov 1 trak 1 mdia 2"},
        {"too large a size is the rest", atomOfSize(999, "trak", atom("mdia")),
         "moov 1 trak 1 mdia 1"},
        {"not descended", atom("edts", atom("trak")) + atom("moov", atom("trak")), "moov 2"},
        {"below a header's size", atomOfSize(4, "trak", "mdia"), "moov 1 trak 1 mdia 1"},
        {"meta with version and flags", atom("meta", word(0) + atom("trak")),
         "moov 1 trak 1 meta 1"},
        {"version and flags that are not 0 are a size", atom("meta", word(12) + atom("trak")),
         "moov 1 meta 1"},
        {"meta without them", atom("meta", atom("trak")), "moov 1 trak 1 meta 1"},
        {"zero behind meta", atom("meta", word(8) + "free") + word(0) + atom("trak"),
         "moov 1 trak 1 meta 1"},
        {"meta goes on behind its end", atom("meta", word(0)) + atom("mdia"),
         "moov 1 mdia 2 meta 1"},
        {"four bytes more at each level",
         atom("trak", atom("trak", atomOfSize(0, "trak", ""))) + atom("mdia"),
         "moov 1 trak 3 mdia 2"},
    };
    for (const auto& row : rows) EXPECT_EQ(found(atom("moov", row.body)), row.found) << row.name;
}

TEST(AtomWalk, NestsAsDeepAsTheBufferReaches) {
    std::string body;
    while (body.size() + 8 <= sizeof(bBuffer) - 8) body += word(0) + "trak";
    EXPECT_EQ(found(atom("moov", body)), "moov 1 trak 32767");
}

TEST(AtomWalk, FileThatCannotBeOpenedLeavesTheRecordEmpty) {
    found(movie("alac", test::item("\251nam", 1, "Song")));
    EXPECT_EQ(iAnalizeM4aFile("/no/such/file"), -1);
    const auto bytes = recordFrom(&m4a);
    EXPECT_EQ(bytes.size(), 2'362'132U);
    EXPECT_TRUE(std::all_of(bytes.begin(), bytes.end(), [](int byte) { return byte == 0; }));
}

}  // namespace
}  // namespace atdp
