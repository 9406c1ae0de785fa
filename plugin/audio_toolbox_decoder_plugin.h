// The principal object: the handshake by key, the descriptor, the choice of decoder class.
#pragma once

#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "decoder/protocols.h"

namespace atdp {

class AudioToolboxDecoderPlugin final : public PluginProtocol {
 public:
    static std::unique_ptr<PluginProtocol> init();  // always null
    static std::unique_ptr<PluginProtocol> initWithKey(std::optional<std::string_view> key);

    std::unique_ptr<Properties> getProperties() override;
    const DecoderClass* findDecoderClassByPath(const std::string& path) override;

 private:
    AudioToolboxDecoderPlugin() = default;
};

}  // namespace atdp
