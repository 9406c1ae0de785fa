// Tags that are pairs of a key and a text. Each adds entries of the information dictionary that are
// not there yet.
#pragma once

#include "services/io/byte_cursor.h"
#include "services/text_map.h"

namespace atdp::services {

// The strings of CAF ('info'): a count, then keys and values, each ended by a NUL.
void addCafStrings(TextMap& information, Bytes strings);

// The annotation of AU, where it has lines of "Title=A title", as FFmpeg writes them. Other text
// adds nothing.
void addAuAnnotation(TextMap& information, Bytes annotation);

}  // namespace atdp::services
