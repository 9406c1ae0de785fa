// The files that a command line means: those it names, and those in the folders it names.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace atdp::host {

struct LibraryFile {
    std::string path;
    std::size_t belowAt;  // where in the path begins what comes below the named folder
    bool named;           // on the command line, rather than found in a folder
    int error;            // why this is a folder that cannot be listed (errno), or 0

    // The path from the named folder down; the mere name of a file that is named itself.
    std::string_view below() const { return std::string_view(path).substr(belowAt); }
};

struct Library {
    std::vector<LibraryFile> files;
    bool hasFolders = false;
};

// Searches folders to their depths, each in the order of the bytes of its names. Leaves out hidden
// files and folders (names that start with a dot) unless they are named, and what is neither file
// nor folder. Links are followed, except to a folder that the link is in. Throws Interrupted.
Library findFiles(const std::vector<std::string>& paths);

}  // namespace atdp::host
