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

// One line an entry: Title="text", Track=3, Track=3u for an unsigned number,
// SrcSampleRate=44100.000000 for a float.
inline Lines linesOf(const MetadataList& list) {
    Lines lines;
    for (const MetadataEntry& entry : list) {
        std::string text;
        if (const auto* string = std::get_if<std::string>(&entry.value))
            text = '"' + *string + '"';
        else if (const auto* number = std::get_if<std::int64_t>(&entry.value))
            text = std::to_string(*number);
        else if (const auto* unsignedNumber = std::get_if<std::uint64_t>(&entry.value))
            text = std::to_string(*unsignedNumber) + 'u';
        else
            text = std::to_string(std::get<float>(entry.value));
        lines.push_back(entry.key + '=' + text);
    }
    return lines;
}

// A test on an open file. The record of calls starts after the open.
class MetadataTest : public scripted::ScriptedTest {
 protected:
    MetadataTest() {
        AudioFileOpenURL(CFURLCreateFromFileSystemRepresentation(nullptr, nullptr, 0, false),
                         kAudioFileReadPermission, 0, &file_);
        leftOpen = {"url 1", "file 1"};
        platform().calls.clear();
    }

    // Tags one after the other; the converter refuses those without entries.
    static void setTags(const std::vector<Value>& tags) {
        platform().userData["id3 "].clear();
        platform().tags = {{"of another file", {}}};
        for (const Value& tag : tags) {
            const std::string bytes = "tag " + std::to_string(platform().userData["id3 "].size());
            platform().userData["id3 "].push_back(bytes);
            if (!tag.entries.empty()) platform().tags[bytes] = tag;
        }
    }

    // What a source adds to the list.
    template <class Source>
    Lines readFrom(const Source& source, MetadataList list) const {
        source(file_, list);
        return linesOf(list);
    }

    AudioFileID file_ = nullptr;
};

inline Value dictionary(std::vector<scripted::Entry> entries) {
    return {std::nullopt, std::move(entries)};
}

}  // namespace atdp
