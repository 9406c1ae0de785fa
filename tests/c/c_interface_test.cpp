// The C library as a host links it.
#include <atdp.h>
#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <limits>
#include <string>
#include <vector>

namespace {

const std::string kChime = ATDP_EXAMPLES "/chime.wav";
const std::string kMpeg = ATDP_TEST_DATA "/layer3-cbr128.mp3";
const std::string kLossless = ATDP_TEST_DATA "/lossless.m4a";

class CInterface : public ::testing::Test {
 protected:
    void SetUp() override {
        atdp_set_log_sink(
            [](const char* line, void* log) { *static_cast<std::string*>(log) = line; },
            &lastLogLine_);
    }

    void TearDown() override {
        atdp_destroy(decoder_);
        atdp_set_log_sink(nullptr, nullptr);
    }

    void openFile(const std::string& path) {
        atdp_destroy(decoder_);
        ASSERT_EQ(atdp_create_for_path(path.c_str(), &decoder_), ATDP_OK);
        ASSERT_EQ(atdp_open(decoder_, path.c_str(), nullptr), ATDP_OK);
    }

    // The next stereo frames.
    std::vector<float> read(std::uint32_t frames) {
        std::vector<float> samples(std::size_t{frames} * 2);
        EXPECT_EQ(atdp_read(decoder_, samples.data(), &frames), ATDP_OK);
        samples.resize(std::size_t{frames} * 2);
        return samples;
    }

    atdp_decoder* decoder_ = nullptr;
    std::string lastLogLine_;
};

TEST_F(CInterface, FrameSeeksAreExactInEveryClass) {
    for (const std::string& path : {kChime, kMpeg, kLossless}) {
        SCOPED_TRACE(path);
        openFile(path);
        const std::vector<float> whole = read(1 << 20);
        const std::uint64_t frames = whole.size() / 2;
        for (const std::uint64_t frame :
             {frames - 1, std::uint64_t{0}, frames / 2 + 1, frames - 4000, std::uint64_t{12345},
              frames, frames + 1, UINT64_MAX}) {
            ASSERT_EQ(atdp_seek_frame(decoder_, frame), ATDP_OK) << frame;
            const auto first = static_cast<std::ptrdiff_t>(2 * std::min(frame, frames));
            const std::vector<float> rest = read(1 << 20);
            EXPECT_TRUE(rest == std::vector<float>(whole.begin() + first, whole.end())) << frame;
        }
    }
}

TEST_F(CInterface, DeliveryIsChangedOrLeft) {
    openFile(kChime);
    atdp_facts facts = ATDP_FACTS_INIT;
    EXPECT_EQ(atdp_set_rate(decoder_, 48000), ATDP_OK);
    EXPECT_EQ(atdp_set_channels(decoder_, 1), ATDP_OK);
    EXPECT_EQ(atdp_set_bits(decoder_, 32), ATDP_OK);
    EXPECT_EQ(atdp_set_rate(decoder_, NAN), ATDP_FAILED);
    EXPECT_EQ(atdp_set_channels(decoder_, -1), ATDP_FAILED);
    EXPECT_EQ(atdp_set_channels(decoder_, 65), ATDP_FAILED);
    EXPECT_EQ(atdp_set_bits(decoder_, 16), ATDP_FAILED);
    EXPECT_EQ(atdp_seek(decoder_, 1'000'000'000), ATDP_OK);
    ASSERT_EQ(atdp_get_facts(decoder_, &facts), ATDP_OK);
    EXPECT_EQ(facts.rate, 48000);
    EXPECT_EQ(facts.channels, 1);
    EXPECT_EQ(facts.timestamp, 1'000'000'000U);
    std::vector<float> samples(200000);
    auto frames = static_cast<std::uint32_t>(samples.size());
    EXPECT_EQ(atdp_read(decoder_, samples.data(), &frames), ATDP_OK);
    EXPECT_EQ(frames, 96000U);
}

TEST_F(CInterface, NullPointersAreRefused) {
    atdp_entry entry = ATDP_ENTRY_INIT;
    atdp_facts facts = ATDP_FACTS_INIT;
    std::uint32_t count = 7;
    float sample = 0;
    EXPECT_EQ(atdp_class_for_path(nullptr), nullptr);
    EXPECT_EQ(atdp_create("AudioToolboxWavDecoder", nullptr), ATDP_INVALID);
    EXPECT_EQ(atdp_create(nullptr, &decoder_), ATDP_INVALID);
    EXPECT_EQ(atdp_create_for_path(kChime.c_str(), nullptr), ATDP_INVALID);
    EXPECT_EQ(atdp_create_for_path(nullptr, &decoder_), ATDP_INVALID);
    EXPECT_EQ(atdp_property_at(0, nullptr), ATDP_INVALID);
    EXPECT_EQ(atdp_decoder_class(nullptr), nullptr);
    EXPECT_EQ(atdp_open(nullptr, kChime.c_str(), nullptr), ATDP_INVALID);
    EXPECT_EQ(atdp_close(nullptr), ATDP_INVALID);
    EXPECT_EQ(atdp_get_facts(nullptr, &facts), ATDP_INVALID);
    EXPECT_EQ(atdp_metadata_count(nullptr, &count), ATDP_INVALID);
    EXPECT_EQ(count, 0U);
    EXPECT_EQ(atdp_metadata_at(nullptr, 0, &entry), ATDP_INVALID);
    EXPECT_EQ(atdp_read(nullptr, &sample, &(count = 1)), ATDP_INVALID);
    EXPECT_EQ(count, 0U);
    EXPECT_EQ(atdp_seek(nullptr, 0), ATDP_INVALID);
    EXPECT_EQ(atdp_seek_frame(nullptr, 0), ATDP_INVALID);
    EXPECT_EQ(atdp_set_rate(nullptr, 44100), ATDP_INVALID);
    EXPECT_EQ(atdp_set_channels(nullptr, 1), ATDP_INVALID);
    EXPECT_EQ(atdp_set_bits(nullptr, 32), ATDP_INVALID);
    atdp_destroy(nullptr);

    openFile(kChime);
    EXPECT_EQ(atdp_get_facts(decoder_, nullptr), ATDP_INVALID);
    EXPECT_EQ(atdp_metadata_count(decoder_, nullptr), ATDP_INVALID);
    EXPECT_EQ(atdp_metadata_at(decoder_, 0, nullptr), ATDP_INVALID);
    EXPECT_EQ(atdp_read(decoder_, &sample, nullptr), ATDP_INVALID);
    EXPECT_EQ(atdp_read(decoder_, nullptr, &(count = 1)), ATDP_INVALID);
    EXPECT_EQ(atdp_read(decoder_, &sample, &(count = UINT32_MAX)), ATDP_INVALID);
    EXPECT_EQ(count, 0U);
}

TEST_F(CInterface, WithoutAnOpenFileCallsFail) {
    EXPECT_EQ(atdp_create("NoSuchDecoder", &decoder_), ATDP_NO_DECODER);
    EXPECT_EQ(atdp_create_for_path("/nowhere", &decoder_), ATDP_NO_DECODER);
    EXPECT_EQ(decoder_, nullptr);
    ASSERT_EQ(atdp_create("AudioToolboxWavDecoder", &decoder_), ATDP_OK);
    const auto expectNoFile = [this] {
        atdp_entry entry = ATDP_ENTRY_INIT;
        atdp_facts facts = ATDP_FACTS_INIT;
        std::uint32_t count = 1;
        float sample = 0;
        EXPECT_EQ(atdp_get_facts(decoder_, &facts), ATDP_WRONG_STATE);
        EXPECT_EQ(atdp_read(decoder_, &sample, &count), ATDP_WRONG_STATE);
        EXPECT_EQ(count, 0U);
        EXPECT_EQ(atdp_metadata_count(decoder_, &count), ATDP_WRONG_STATE);
        EXPECT_EQ(atdp_metadata_at(decoder_, 0, &entry), ATDP_WRONG_STATE);
        EXPECT_EQ(atdp_seek(decoder_, 0), ATDP_WRONG_STATE);
        EXPECT_EQ(atdp_seek_frame(decoder_, 0), ATDP_WRONG_STATE);
        EXPECT_EQ(atdp_set_rate(decoder_, 48000), ATDP_WRONG_STATE);
        EXPECT_EQ(atdp_set_channels(decoder_, 1), ATDP_WRONG_STATE);
        EXPECT_EQ(atdp_set_bits(decoder_, 32), ATDP_WRONG_STATE);
        EXPECT_EQ(atdp_close(decoder_), ATDP_OK);
    };
    expectNoFile();
    EXPECT_EQ(atdp_open(decoder_, "/nowhere", nullptr), ATDP_FAILED);
    EXPECT_NE(lastLogLine_.find("-43"), std::string::npos) << lastLogLine_;
    expectNoFile();
    ASSERT_EQ(atdp_open(decoder_, kChime.c_str(), nullptr), ATDP_OK);  // after a failure
    EXPECT_EQ(atdp_open(decoder_, kChime.c_str(), nullptr), ATDP_WRONG_STATE);
    EXPECT_EQ(read(10).size(), 20U);  // the file is open still
    EXPECT_EQ(atdp_close(decoder_), ATDP_OK);
    expectNoFile();
    ASSERT_EQ(atdp_open(decoder_, kChime.c_str(), nullptr), ATDP_OK);  // and the next one
    EXPECT_EQ(read(1 << 20).size(), 2U * 132300);
}

// As a host built with a later header has them, or one that forgot the size.
TEST_F(CInterface, StructuresAreTakenBySize) {
    struct {
        atdp_options known;
        double later;
    } options{ATDP_OPTIONS_INIT, 0};
    ASSERT_EQ(atdp_create("AudioToolboxMP3Decoder", &decoder_), ATDP_OK);
    for (const std::size_t wrong : {std::size_t{0}, sizeof(atdp_options) - 1, SIZE_MAX}) {
        options.known.size = wrong;
        EXPECT_EQ(atdp_open(decoder_, kMpeg.c_str(), &options.known), ATDP_INVALID) << wrong;
    }
    options.known.size = sizeof options;
    options.later = 1;
    EXPECT_EQ(atdp_open(decoder_, kMpeg.c_str(), &options.known), ATDP_INVALID);
    options.later = 0;
    for (const double level : {double{NAN}, -std::numeric_limits<double>::infinity(), 1e300}) {
        options.known.mp3_threshold_db = level;
        EXPECT_EQ(atdp_open(decoder_, kMpeg.c_str(), &options.known), ATDP_INVALID) << level;
    }
    options.known.mp3_threshold_db = -60;
    ASSERT_EQ(atdp_open(decoder_, kMpeg.c_str(), &options.known), ATDP_OK);

    struct {
        atdp_facts known;
        std::uint64_t later, beyond;
    } facts{ATDP_FACTS_INIT, 5, 6};
    facts.known.size = offsetof(decltype(facts), beyond);
    ASSERT_EQ(atdp_get_facts(decoder_, &facts.known), ATDP_OK);
    EXPECT_EQ(facts.known.size, offsetof(decltype(facts), beyond));
    EXPECT_EQ(facts.known.rate, 44100);
    EXPECT_EQ(facts.later, 0U);
    EXPECT_EQ(facts.beyond, 6U);
    facts.known.size = 8;
    facts.known.rate = 0;
    EXPECT_EQ(atdp_get_facts(decoder_, &facts.known), ATDP_INVALID);
    EXPECT_EQ(facts.known.rate, 0);
    atdp_entry entry{};
    EXPECT_EQ(atdp_metadata_at(decoder_, 0, &entry), ATDP_INVALID);
    EXPECT_EQ(atdp_property_at(0, &entry), ATDP_INVALID);
}

TEST_F(CInterface, ListsEndAndKeepTheirTexts) {
    EXPECT_EQ(atdp_interface_version(), std::uint32_t{ATDP_INTERFACE_VERSION});
    std::string properties;
    atdp_entry entry = ATDP_ENTRY_INIT;
    for (std::uint32_t i = 0; atdp_property_at(i, &entry) == ATDP_OK; ++i) {
        properties +=
            std::string(entry.key) + "=" +
            (entry.kind == ATDP_TEXT ? entry.text : std::to_string(entry.unsigned_integer)) + ";";
    }
    EXPECT_EQ(properties,
              "name=AudioToolboxDecoderPlugin;i/f version=1.0.0;priority=100;plugin type=1;"
              "codec type=1;exts=wav,aiff,aif,mp3,m4a;");
    openFile(kLossless);
    std::uint32_t count = 0;
    ASSERT_EQ(atdp_metadata_count(decoder_, &count), ATDP_OK);
    EXPECT_EQ(atdp_metadata_at(decoder_, count - 1, &entry), ATDP_OK);
    const char* const key = entry.key;
    EXPECT_EQ(atdp_metadata_at(decoder_, count, &entry), ATDP_NO_ENTRY);
    EXPECT_EQ(entry.key, key);  // as it was
    EXPECT_STREQ(key, "Track");
}

}  // namespace
