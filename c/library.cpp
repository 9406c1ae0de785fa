// What the library says of itself, and its log.
#include <memory>
#include <new>
#include <string>
#include <variant>
#include <vector>

#include "c/entries.h"
#include "c/guarded.h"
#include "plugin/audio_toolbox_decoder_plugin.h"
#include "plugin/module.h"

namespace atdp::c {
namespace {

struct EntryValueOf {
    MetadataValue operator()(const std::string& text) const { return text; }
    MetadataValue operator()(std::uint32_t number) const { return std::uint64_t{number}; }
    MetadataValue operator()(const std::vector<std::string>& list) const {
        std::string text;
        for (const std::string& item : list) text += (text.empty() ? "" : ",") + item;
        return text;
    }
};

MetadataList makeProperties() {
    const auto plugin = AudioToolboxDecoderPlugin::initWithKey(kPluginKey);
    const auto properties = plugin ? plugin->getProperties() : nullptr;
    if (!properties) throw std::bad_alloc();
    MetadataList list;
    for (const auto& [key, value] : *properties) {
        list.push_back({key, std::visit(EntryValueOf(), value)});
    }
    return list;
}

// Never freed, since a host may hold on to the texts until its end.
const MetadataList& properties() {
    static const MetadataList& kProperties = *new MetadataList(makeProperties());
    return kProperties;
}

}  // namespace
}  // namespace atdp::c

const char* atdp_result_text(atdp_result result) noexcept {
    switch (result) {
        case ATDP_OK:
            return "success";
        case ATDP_INVALID:
            return "invalid argument";
        case ATDP_WRONG_STATE:
            return "no file is open, or one is already";
        case ATDP_NO_MEMORY:
            return "out of memory";
        case ATDP_NO_DECODER:
            return "no decoder for this file (unreadable or of no known kind), or of that name";
        case ATDP_NO_ENTRY:
            return "no such entry";
        case ATDP_FAILED:
            return "cannot be opened, sought or set";
        case ATDP_READ_FAILED:
            return "decoding failed";
    }
    return "unknown result";
}

const char* atdp_version(void) noexcept {
    return ATDP_VERSION;
}

std::uint32_t atdp_interface_version(void) noexcept {
    return ATDP_INTERFACE_VERSION;
}

void atdp_set_log_sink(atdp_log_sink sink, void* context) noexcept {
    AudioToolboxDecoderPluginSetLogSink(sink, context);
}

atdp_result atdp_property_at(std::uint32_t index, atdp_entry* entry) noexcept {
    if (entry == nullptr) return ATDP_INVALID;
    return atdp::c::guarded([&] { return atdp::c::entryAt(atdp::c::properties(), index, entry); });
}
