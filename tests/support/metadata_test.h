// What the tests of the metadata readers share.
#pragma once

#include <string>
#include <utility>
#include <vector>

#include "metadata/metadata_list.h"
#include "tests/support/scripted_test.h"

namespace atdp {

using scripted::Lines;
using scripted::platform;
using scripted::Value;

// A test on an open file. The record of calls starts after the open.
class MetadataTest : public scripted::ScriptedTest {
 protected:
    MetadataTest() {
        AudioFileOpenURL(CFURLCreateFromFileSystemRepresentation(nullptr, nullptr, 0, false),
                         kAudioFileReadPermission, 0, &file_);
        leftOpen = {"url 1", "file 1"};
        platform().calls.clear();
    }

    AudioFileID file_ = nullptr;
};

// One line an entry: Title="text", Track=3, SrcSampleRate=44100.000000 for a float.
inline Lines linesOf(const MetadataList& list) {
    Lines lines;
    for (const MetadataEntry& entry : list) {
        const auto* text = std::get_if<std::string>(&entry.value);
        const auto* number = std::get_if<std::int64_t>(&entry.value);
        lines.push_back(entry.key + '=' +
                        (text     ? '"' + *text + '"'
                         : number ? std::to_string(*number)
                                  : std::to_string(std::get<float>(entry.value))));
    }
    return lines;
}

inline Value dictionary(std::vector<scripted::Entry> entries) {
    return {std::nullopt, std::move(entries)};
}

}  // namespace atdp
