// What the player shows of a song.
#pragma once

#include <libaudcore/index.h>
#include <libaudcore/tuple.h>
#include <libaudcore/vfs.h>

#include "host/opened_file.h"

namespace atdp::audacious {

// Bits a second: of the samples themselves, or on average where they are compressed. `file` is the
// same file as the player has it open.
int bitRate(host::OpenedFile& sound, VFSFile& file);

// Fills in what the decoder knows, and what the player's own reader of tags finds beside it: genre,
// year, ReplayGain and the like, and the cover, which goes to `image` unless that is null.
// `sound` must be freshly opened. Throws host::Failure and std::bad_alloc.
void describeSong(host::OpenedFile& sound, host::ModuleLog& log, VFSFile& file, Tuple& tuple,
                  Index<char>* image);

}  // namespace atdp::audacious
