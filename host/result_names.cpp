#include "host/result_names.h"

#include <algorithm>
#include <functional>
#include <utility>

#include "host/failure.h"

namespace atdp::host {
namespace {

std::size_t hashOf(std::string_view name) {
    return std::hash<std::string>()(lowerCase(name));
}

std::string_view stemOf(std::string_view path) {
    return path.substr(0, path.size() - extensionOf(path).size());
}

// A stem and its whole name.
using NameHashes = std::pair<std::size_t, std::size_t>;

// The stems of different names, sorted: a file that is met twice is no rival of its own.
std::vector<std::size_t> stemsOf(std::vector<NameHashes> names) {
    std::ranges::sort(names);
    std::vector<std::size_t> stems;
    for (std::size_t i = 0; i < names.size(); ++i) {
        if (i == 0 || names[i] != names[i - 1]) stems.push_back(names[i].first);
    }
    return stems;
}

auto countIn(const std::vector<std::size_t>& sortedHashes, std::size_t hash) {
    return std::ranges::equal_range(sortedHashes, hash).size();
}

}  // namespace

ResultNames::ResultNames(const Library& library, SoundNames sounds, std::string extension)
    : sounds_(std::move(sounds)), extension_(std::move(extension)) {
    std::vector<NameHashes> all;
    std::vector<NameHashes> sound;
    for (const LibraryFile& file : library.files) {
        names_.push_back(hashOf(file.below()));
        all.emplace_back(hashOf(stemOf(file.below())), names_.back());
        if (sounds_.contains(file.path)) sound.push_back(all.back());
    }
    std::ranges::sort(names_);
    stems_ = stemsOf(std::move(all));
    soundStems_ = stemsOf(std::move(sound));
    for (const LibraryFile& file : library.files) {
        if (countIn(names_, hashOf(file.below())) > 1)
            firstPaths_.try_emplace(lowerCase(file.below()), file.path);
    }
}

// What is no sound by its name, such as a text beside a song, stands in the way of its own kind
// alone. The stem must not be a whole name either, which may get the extension appended.
bool ResultNames::isStemFree(const LibraryFile& file) const {
    const std::size_t stem = hashOf(stemOf(file.below()));
    const Hashes& rivals = sounds_.contains(file.path) ? soundStems_ : stems_;
    return countIn(rivals, stem) == 1 && countIn(names_, stem) == 0;
}

std::string ResultNames::nameFor(const LibraryFile& file) const {
    const auto first = firstPaths_.find(lowerCase(file.below()));
    if (first != firstPaths_.end() && first->second != file.path) {
        throw Failure(file.path, "its result would replace that of " + std::string(first->second) +
                                     " (decode it into another folder)");
    }
    const std::string_view kept = isStemFree(file) ? stemOf(file.below()) : file.below();
    return std::string(kept) + extension_;
}

}  // namespace atdp::host
