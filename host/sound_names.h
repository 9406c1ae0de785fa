// Which files are sound by their names.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "host/plugin_module.h"

namespace atdp::host {

class SoundNames {
 public:
    // Asks the plug-in for the extensions that it decodes. Throws Failure when the module does not
    // say.
    explicit SoundNames(PluginModule& module) : extensions_(module.extensions()) {}

    // Any thread.
    bool contains(std::string_view path) const;

 private:
    std::vector<std::string> extensions_;
};

// The extension of the path's last name with its dot, empty when it has none.
std::string_view extensionOf(std::string_view path);

// With the letters of ASCII in lower case.
std::string lowerCase(std::string_view text);

}  // namespace atdp::host
