// How a host gets from the loaded module to the plug-in.
#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string_view>

#include "decoder/protocols.h"
#include "platform/app_kit.h"           // the release number
#include "platform/core_audio_types.h"  // statuses, as the log shows them
#include "platform/export.h"
#include "platform/log.h"  // where the log goes

extern "C" {
ATDP_EXPORT extern const char* const PLUGIN_KEY_NAME;
ATDP_EXPORT extern const char* const PLUGIN_KEY_VER;
ATDP_EXPORT extern const char* const PLUGIN_KEY_IF_VER;
ATDP_EXPORT extern const char* const PLUGIN_KEY_PRIO;
ATDP_EXPORT extern const char* const PLUGIN_KEY_PLUG_TYPE;
ATDP_EXPORT extern const char* const PLUGIN_KEY_UI_TYPE;
ATDP_EXPORT extern const char* const PLUGIN_KEY_CODEC_TYPE;
ATDP_EXPORT extern const char* const PLUGIN_KEY_EXTS;
ATDP_EXPORT extern const char* const PLUGIN_KEY_FILTER_TYPE;
ATDP_EXPORT extern const char* const PLUGIN_KEY_ACTION_TYPE;
}

namespace atdp {

// The number of the interface that these headers describe; it changes whenever a host built with
// older headers could no longer use the module.
inline constexpr std::uint32_t kModuleInterfaceNumber = 1;

// The key that the plug-in accepts.
inline constexpr std::string_view kPluginKey = "3B9C61F0-5A2E-4D87-8E14-C2A7F05D9B63";

// The principal class: static, valid while the module is loaded.
struct PrincipalClass {
    const char* name;

    // Always null: a plug-in is never made without the key.
    std::unique_ptr<PluginProtocol> (*init)();

    // The plug-in, or null when the key is missing or not the plug-in's, letter for letter.
    std::unique_ptr<PluginProtocol> (*initWithKey)(std::optional<std::string_view> key);
};

using ModuleEntry = const PrincipalClass* (*)(std::uint32_t interfaceNumber);
inline constexpr const char* kModuleEntryName = "AudioToolboxDecoderPluginPrincipalClass";

}  // namespace atdp

// The module's entry point: the principal class, or null when the module does not speak that
// interface number. A host looks it up by kModuleEntryName and calls it before anything else.
extern "C" ATDP_EXPORT const atdp::PrincipalClass* AudioToolboxDecoderPluginPrincipalClass(
    std::uint32_t interfaceNumber);
