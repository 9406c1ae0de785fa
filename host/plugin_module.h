// The loaded decoder module.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "host/module_log.h"
#include "plugin/module.h"

namespace atdp::host {

// The module to load when the command line names none: beside this program, in its sibling folder
// lib, or in the folder of modules of the tree that this program is installed in. Throws Failure
// when it is in none of them.
std::string defaultModulePath();

// The module to load for a plug-in of another program: beside the library that `address` lies in
// (or beside the file that a link there leads to), or where the module is installed. Throws Failure
// when it is in neither.
std::string modulePathBeside(const void* address);

// Loads the module and makes its plug-in, which any threads may use at once. Whatever the plug-in
// hands out must be gone before this is, since the code that destroys it goes with the module.
class PluginModule {
 public:
    explicit PluginModule(const std::string& path);  // throws Failure

    PluginProtocol& plugin() { return *plugin_; }
    ModuleLog& log() { return log_; }

    // The file extensions that the plug-in says it decodes, in lower case, without a dot. Throws
    // Failure when the module does not export the key of that property.
    std::vector<std::string> extensions();

    // The key of openByPath's option for the silence threshold. Throws Failure when the module
    // exports none.
    std::string thresholdKey() const;

    // Makes the module believe that it runs on that release of its platform. Throws Failure when
    // the module exports no release number.
    void setRelease(double release);

 private:
    struct LibraryCloser {
        void operator()(void* library) const;
    };

    // A function or constant of the module, by its name.
    template <class T>
    T* symbol(const char* name) const;

    std::string path_;
    ModuleLog log_;
    std::unique_ptr<void, LibraryCloser> library_;
    std::unique_ptr<PluginProtocol> plugin_;
};

}  // namespace atdp::host
