// What the results of many files are called, so that no two are called the same.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "host/library.h"
#include "host/sound_names.h"

namespace atdp::host {

// A result has its file's name with the extension of results instead of its own: a.mp3 becomes
// a.wav. Where that would not be the only one in its folder (a.mp3 beside a.aiff), each keeps its
// whole name: a.mp3.wav and a.aiff.wav. Upper and lower case make no difference, since there are
// file systems to which they make none.
class ResultNames {
 public:
    // `extension` is that of the results, with its dot. The library must outlive this.
    ResultNames(const Library& library, SoundNames sounds, std::string extension);

    // The path of the file's result from the output folder down. Throws Failure when the result of
    // an earlier file, from another named folder or another by its case alone, has that path. Any
    // thread.
    std::string nameFor(const LibraryFile& file) const;

 private:
    // Of names, sorted: a million of them take 8 MB each. Two that are wrongly taken for the same
    // cost no more than a longer name.
    using Hashes = std::vector<std::size_t>;

    bool isStemFree(const LibraryFile& file) const;

    SoundNames sounds_;
    std::string extension_;
    Hashes names_;
    Hashes stems_;
    Hashes soundStems_;  // of the files that are sound by their names
    std::unordered_map<std::string, std::string_view> firstPaths_;  // of names that recur
};

}  // namespace atdp::host
