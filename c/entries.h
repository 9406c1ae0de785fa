// Facts by key, as C callers take them.
#pragma once

#include <cstdint>

#include "include/atdp.h"
#include "metadata/metadata_list.h"

namespace atdp::c {

// Entry `index` of the list, whose texts stay the list's. ATDP_OK, ATDP_NO_ENTRY or ATDP_INVALID.
atdp_result entryAt(const MetadataList& list, std::uint32_t index, atdp_entry* entry);

}  // namespace atdp::c
