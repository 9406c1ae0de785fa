#include "mp4/m4a_record.h"

#include <algorithm>
#include <cstring>

namespace atdp {

M4aRecord m4a;

namespace {

// From this byte on the record holds zeros. It moves only within the sample sizes, nearly all of
// the record: a broken file can hold stsz atoms by the thousand, each with more zeros to copy than
// the file is long.
constexpr std::size_t kSizesStart = sizeof(m4a) - sizeof(m4a.stsz.sizes);
std::size_t zerosStart = kSizesStart;

// What may still be copied for this file. A whole record is 2.4 MB, which a real file fills once; a
// broken one can hold table upon table, each of which would be copied anew.
constexpr std::size_t kMostCopiedBytes = 64 * 1024 * 1024;
std::size_t copyBudgetBytes = kMostCopiedBytes;

}  // namespace

void clearRecord() {
    std::memset(&m4a, 0, sizeof(m4a));
    zerosStart = kSizesStart;
    copyBudgetBytes = kMostCopiedBytes;
}

void copyToRecord(std::span<const std::uint8_t> source, std::size_t bytes, void* field) {
    const auto target = recordFrom(field);
    const std::size_t end = std::min(bytes, target.size());
    const std::size_t there = std::min(end, source.size());
    if (there > copyBudgetBytes) return;
    copyBudgetBytes -= there;
    if (there > 0) std::memcpy(target.data(), source.data(), there);
    const std::size_t start = sizeof(m4a) - target.size();
    const std::size_t zerosEnd = std::min(start + end, zerosStart);
    if (start + there < zerosEnd) std::memset(target.data() + there, 0, zerosEnd - (start + there));
    zerosStart = std::max(zerosStart, start + there);
}

std::span<std::uint8_t> recordFrom(void* field) {
    auto* const record = reinterpret_cast<std::uint8_t*>(&m4a);
    const auto offset = static_cast<std::size_t>(static_cast<std::uint8_t*>(field) - record);
    return {record + offset, sizeof(m4a) - offset};
}

}  // namespace atdp
