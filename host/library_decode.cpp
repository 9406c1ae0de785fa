#include "host/library_decode.h"

#include <algorithm>
#include <filesystem>
#include <system_error>

#include "host/failure.h"
#include "host/library_work.h"
#include "host/result_names.h"

namespace atdp::host {
namespace {

namespace fs = std::filesystem;

bool isWithin(const fs::path& path, const fs::path& folder) {
    return std::ranges::mismatch(folder, path).in1 == folder.end();
}

// Without links, and without a slash at its end.
fs::path resolved(const std::string& path) {
    std::error_code error;
    const fs::path whole = fs::weakly_canonical(fs::absolute(path), error);
    if (error) return path;
    return whole.has_filename() ? whole : whole.parent_path();
}

// A second run would decode the results of the first, and so on.
void checkFolderIsApart(const LibraryDecodeOptions& options) {
    const fs::path folder = resolved(options.folder);
    for (const std::string& path : options.library.paths) {
        std::error_code ignored;  // of paths that do not exist
        if (!fs::is_directory(path, ignored) || !isWithin(folder, resolved(path))) continue;
        throw UsageError(options.folder + ": lies in " + path +
                         ", which is searched for files (name another folder with -o)");
    }
}

void makeFolder(const fs::path& folder) {
    std::error_code error;
    fs::create_directories(folder, error);
    if (error == std::errc::no_space_on_device) throw DiskFull(folder, error.message());
    if (error) throw Failure(folder, error.message());
}

// No older than its file, that is.
bool isComplete(const fs::path& result, const std::string& path) {
    std::error_code error;
    const auto written = fs::last_write_time(result, error);
    if (error) return false;
    const auto changed = fs::last_write_time(path, error);
    return !error && written >= changed;
}

class LibraryDecode {
 public:
    LibraryDecode(PluginModule& module, const LibraryDecodeOptions& options)
        : module_(module),
          options_(options),
          library_(findFiles(options.library.paths)),
          sounds_(module),
          names_(library_, sounds_, options.decode.raw ? ".raw" : ".wav"),
          progress_(library_.files.size(), true) {}

    int run() {
        const LibraryWork work{
            [this](const LibraryFile& file) { return decode(file); }, {}, "decoded"};
        return workThrough(library_, options_.library.jobs, work, progress_);
    }

 private:
    FileResult decode(const LibraryFile& file) {
        if (isOtherFile(module_, sounds_, file)) return {Outcome::kNotSound, {}, {}};
        const fs::path result = options_.folder / fs::path(names_.nameFor(file));
        std::error_code ignored;  // of paths that do not exist
        if (fs::equivalent(result, file.path, ignored))
            throw Failure(file.path, "its result would replace it (decode it into another folder)");
        if (fs::is_fifo(result, ignored))
            throw Failure(result, "is no file");  // a wait without end
        if (!options_.again && fs::is_regular_file(result, ignored)) {
            if (isComplete(result, file.path)) return {Outcome::kComplete, {}, {}};
            throw Failure(
                result, "exists already and is older than " + file.path + " (--force replaces it)");
        }
        FileDecode decode(module_, file.path, options_.decode);
        makeFolder(result.parent_path());
        std::uint64_t framesTold = 0;
        decode.writeTo(result, [&](std::uint64_t framesDone) {
            progress_.addSound(static_cast<double>(framesDone - framesTold) /
                               double{decode.rate()});
            framesTold = framesDone;
        });
        return {};
    }

    PluginModule& module_;
    const LibraryDecodeOptions& options_;
    Library library_;
    SoundNames sounds_;
    ResultNames names_;
    LibraryProgress progress_;
};

}  // namespace

int decodeLibrary(PluginModule& module, const LibraryDecodeOptions& options) {
    checkFolderIsApart(options);
    makeFolder(options.folder);
    return LibraryDecode(module, options).run();
}

}  // namespace atdp::host
