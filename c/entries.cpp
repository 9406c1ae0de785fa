#include "c/entries.h"

#include <cstddef>
#include <string>
#include <variant>

#include "c/sized_structure.h"

namespace atdp::c {
namespace {

constexpr std::size_t kFirstSize = offsetof(atdp_entry, kind) + sizeof(atdp_entry::kind);

// Sets the value of an entry and its kind.
struct ValueSetter {
    atdp_entry& entry;

    void operator()(const std::string& text) const {
        entry.kind = ATDP_TEXT;
        entry.text = text.c_str();
    }
    void operator()(std::int64_t number) const {
        entry.kind = ATDP_INTEGER;
        entry.integer = number;
    }
    void operator()(std::uint64_t number) const {
        entry.kind = ATDP_UNSIGNED;
        entry.unsigned_integer = number;
    }
    void operator()(float number) const {
        entry.kind = ATDP_REAL;
        entry.real = number;
    }
};

}  // namespace

atdp_result entryAt(const MetadataList& list, std::uint32_t index, atdp_entry* entry) {
    if (index >= list.size()) return ATDP_NO_ENTRY;
    atdp_entry found{};
    found.key = list[index].key.c_str();
    std::visit(ValueSetter{found}, list[index].value);
    return handOver(found, entry, kFirstSize) ? ATDP_OK : ATDP_INVALID;
}

}  // namespace atdp::c
