// Decodes many files into a folder.
#pragma once

#include <string>

#include "host/file_decode.h"
#include "host/library_options.h"

namespace atdp::host {

struct LibraryDecodeOptions {
    LibraryOptions library;
    std::string folder;  // made when there is none
    bool again = false;  // what is complete already as well
    DecodeOptions decode;
};

// Keeps the folders below a named folder, and names results as ResultNames does. A result that
// stands there under its final name, no older than its file, is complete and left alone. Tells
// errors and the summary, and answers the exit code. Throws UsageError when the results would lie
// among the files, to be taken for some of them later.
int decodeLibrary(PluginModule& module, const LibraryDecodeOptions& options);

}  // namespace atdp::host
