// The built module as a host sees it: loaded, looked up by name, nothing linked.
#include "tests/support/module_test.h"

#include <cstdio>
#include <map>
#include <set>
#include <string>

namespace atdp {
namespace {

const std::map<std::string, std::string> kConstants = {
    {"PLUGIN_KEY_NAME", "name"},
    {"PLUGIN_KEY_VER", "version"},
    {"PLUGIN_KEY_IF_VER", "i/f version"},
    {"PLUGIN_KEY_PRIO", "priority"},
    {"PLUGIN_KEY_PLUG_TYPE", "plugin type"},
    {"PLUGIN_KEY_UI_TYPE", "ui type"},
    {"PLUGIN_KEY_CODEC_TYPE", "codec type"},
    {"PLUGIN_KEY_EXTS", "exts"},
    {"PLUGIN_KEY_FILTER_TYPE", "filter type"},
    {"PLUGIN_KEY_ACTION_TYPE", "action type"},
    {"DECODER_OPTION_KEY_MP3_THREASHOLD_DB", "mp3 threashold db"},
    {"METADATA_COMMON_KEY_ARTIST", "Artist"},
    {"METADATA_COMMON_KEY_TITLE", "Title"},
    {"METADATA_COMMON_KEY_SRC_BITS", "SrcBits"},
    {"METADATA_COMMON_KEY_SRC_SAMPLERATE", "SrcSampleRate"},
    {"METADATA_COMMON_KEY_ALBUM", "Album"},
    {"METADATA_COMMON_KEY_TRACK", "Track"},
};

TEST_F(ModuleTest, ConstantsHaveTheirTexts) {
    for (const auto& [name, text] : kConstants) {
        const auto* constant = static_cast<const char* const*>(dlsym(module_, name.c_str()));
        ASSERT_NE(constant, nullptr) << name;
        EXPECT_EQ(*constant, text) << name;
    }
    const auto* release = static_cast<double*>(dlsym(module_, "NSAppKitVersionNumber"));
    ASSERT_NE(release, nullptr);
    EXPECT_EQ(*release, 1138.0);
}

TEST_F(ModuleTest, ExportsNothingElse) {
    std::set<std::string> expected = {"AudioToolboxDecoderPluginPrincipalClass",
                                      "AudioToolboxDecoderPluginSetLogSink",
                                      "NSAppKitVersionNumber"};
    for (const auto& [name, text] : kConstants) expected.insert(name);

    std::FILE* symbols =
        popen("\"" ATDP_NM "\" -D -j --defined-only \"" ATDP_MODULE_PATH "\"", "r");
    ASSERT_NE(symbols, nullptr);
    std::set<std::string> exported;
    char line[256];
    while (std::fgets(line, sizeof(line), symbols) != nullptr) {
        const std::string name(line);
        exported.insert(name.substr(0, name.find('\n')));
    }
    EXPECT_EQ(pclose(symbols), 0);
    EXPECT_EQ(exported, expected);
}

TEST_F(ModuleTest, SpeaksOneInterfaceNumberOnly) {
    EXPECT_STREQ(principal_->name, "AudioToolboxDecoderPlugin");
    EXPECT_EQ(entry_(0), nullptr);
    EXPECT_EQ(entry_(2), nullptr);
}

TEST_F(ModuleTest, PluginIsMadeWithItsKeyOnly) {
    const auto plugin = makePlugin();
    ASSERT_NE(plugin, nullptr);
    plugin->getProperties()->clear();
    EXPECT_EQ(plugin->getProperties()->size(), 6U);  // each descriptor is new
    EXPECT_EQ(principal_->init(), nullptr);
    EXPECT_EQ(principal_->initWithKey(std::nullopt), nullptr);
    for (const char* wrong :
         {"", "3b9c61f0-5a2e-4d87-8e14-c2a7f05d9b63", "3B9C61F0-5A2E-4D87-8E14-C2A7F05D9B63 ",
          "3B9C61F0-5A2E-4D87-8E14-C2A7F05D9B6"})
        EXPECT_EQ(principal_->initWithKey(wrong), nullptr) << wrong;
}

}  // namespace
}  // namespace atdp
