#include "plugin/module.h"

#include "plugin/audio_toolbox_decoder_plugin.h"

const atdp::PrincipalClass* AudioToolboxDecoderPluginPrincipalClass(std::uint32_t interfaceNumber) {
    static constexpr atdp::PrincipalClass kClass{"AudioToolboxDecoderPlugin",
                                                 &atdp::AudioToolboxDecoderPlugin::init,
                                                 &atdp::AudioToolboxDecoderPlugin::initWithKey};
    return interfaceNumber == atdp::kModuleInterfaceNumber ? &kClass : nullptr;
}
