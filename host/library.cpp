#include "host/library.h"

#include <sys/stat.h>

#include <algorithm>
#include <cerrno>
#include <filesystem>
#include <system_error>
#include <utility>

#include "host/stop_signal.h"
#include "host/terminal_line.h"

namespace atdp::host {
namespace {

namespace fs = std::filesystem;

struct FolderEntry {
    std::string name;
    bool isFolder;
};

// A link that leads nowhere counts as a file: whoever opens it will say so.
bool isToBeOpened(const fs::directory_entry& entry) {
    std::error_code ignored;
    const fs::file_type type = entry.status(ignored).type();
    return type == fs::file_type::regular || type == fs::file_type::not_found ||
           type == fs::file_type::none;
}

std::vector<FolderEntry> entriesOf(const std::string& folder, std::error_code& error) {
    std::vector<FolderEntry> entries;
    for (fs::directory_iterator i(folder, error), end; !error && i != end; i.increment(error)) {
        std::string name = i->path().filename();
        std::error_code ignored;
        if (name.starts_with('.')) continue;
        if (i->is_directory(ignored)) {
            entries.push_back({std::move(name), true});
        } else if (isToBeOpened(*i)) {
            entries.push_back({std::move(name), false});
        }
    }
    std::ranges::sort(entries, {}, &FolderEntry::name);
    return entries;
}

class Search {
 public:
    void addNamed(const std::string& path) {
        struct stat facts;
        if (::stat(path.c_str(), &facts) != 0 || !S_ISDIR(facts.st_mode)) {
            library_.files.push_back({path, path.rfind('/') + 1, true, 0});
            return;
        }
        library_.hasFolders = true;
        const std::string start = path.ends_with('/') ? path : path + "/";
        belowAt_ = start.size();
        addFolder(path, start);
    }

    Library take() { return std::move(library_); }

 private:
    using Identity = std::pair<dev_t, ino_t>;

    // `start` is what the paths of its files start with.
    void addFolder(const std::string& folder, const std::string& start) {
        checkForStop();
        struct stat facts;
        if (::stat(folder.c_str(), &facts) != 0) return addUnreadable(folder, errno);
        const Identity identity(facts.st_dev, facts.st_ino);
        if (std::ranges::find(above_, identity) != above_.end()) return;

        std::error_code error;
        const std::vector<FolderEntry> entries = entriesOf(folder, error);
        if (error) addUnreadable(folder, error.value());
        above_.push_back(identity);
        for (const FolderEntry& entry : entries) {
            std::string path = start + entry.name;
            if (entry.isFolder) {
                addFolder(path, path + "/");
            } else {
                library_.files.push_back({std::move(path), belowAt_, false, 0});
            }
        }
        above_.pop_back();
        if (line_.isDue()) line_.show(std::to_string(library_.files.size()) + " files found");
    }

    void addUnreadable(const std::string& folder, int error) {
        library_.files.push_back({folder, folder.size(), false, error});
    }

    Library library_;
    std::size_t belowAt_ = 0;
    std::vector<Identity> above_;  // the folders that the search is in
    TerminalLine line_;
};

}  // namespace

Library findFiles(const std::vector<std::string>& paths) {
    Search search;
    for (const std::string& path : paths) search.addNamed(path);
    return search.take();
}

}  // namespace atdp::host
