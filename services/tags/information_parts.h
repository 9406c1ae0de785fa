// What the information dictionaries of different files are put together from.
#pragma once

#include <cstddef>
#include <vector>

#include "services/io/byte_source.h"
#include "services/tags/id3v2_tag.h"
#include "services/text_map.h"

namespace atdp::services {

// What is there of a range, and of that no more than is looked at of a tag.
std::vector<std::byte> readTagBytes(ByteSource& source, ByteRange range);

// The entries of the information dictionary that a tag holds.
TextMap informationOf(const Id3v2Tag& tag);

// Makes "year" the year where it is a date.
void shortenYear(TextMap& information);

}  // namespace atdp::services
