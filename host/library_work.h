// A command's work on each of many files.
#pragma once

#include <cstdint>
#include <functional>
#include <string_view>

#include "host/file_result.h"
#include "host/library.h"
#include "host/library_progress.h"
#include "host/sound_names.h"

namespace atdp::host {

struct LibraryWork {
    // What is done for a file, on any thread. A Failure becomes the file's result; a DiskFull and
    // any other exception ends the work on all files.
    std::function<FileResult(const LibraryFile&)> work;

    // Takes each result in the order of the files, on the caller's thread, after its error has
    // been told. Nothing: results are not wanted.
    std::function<void(const LibraryFile&, const FileResult&)> deliver;

    std::string_view summaryWord;  // as LibraryProgress takes it; empty: no summary is told
};

// Works on up to `jobs` files at once and answers the exit code. Errors and summary go to standard
// error.
int workThrough(const Library& library, std::uint32_t jobs, const LibraryWork& work,
                LibraryProgress& progress);

// Whether the file, found in a folder, is nothing that one wants to decode: a picture, a text. A
// file that is sound by its name is not, although no class decodes it: it is damaged. Any thread.
bool isOtherFile(PluginModule& module, const SoundNames& names, const LibraryFile& file);

}  // namespace atdp::host
