#include "host/plugin_module.h"

#include <dlfcn.h>

#include <filesystem>
#include <initializer_list>
#include <new>
#include <optional>
#include <string_view>
#include <type_traits>
#include <variant>

#include "decoder/option_keys.h"
#include "host/failure.h"

namespace atdp::host {
namespace {

constexpr const char* kModuleFileName = "AudioToolboxDecoderPlugin.so";

// Why the last dlopen failed. Most of its messages start with the path, which ours name already.
std::string loadError(const std::string& path) {
    const std::string message = dlerror();
    return message.starts_with(path + ": ") ? message.substr(path.size() + 2) : message;
}

// Where this program is; where it was to be installed, if the system does not tell.
std::filesystem::path folderOfProgram() {
    std::error_code problem;
    const auto program = std::filesystem::read_symlink("/proc/self/exe", problem);
    return problem ? ATDP_INSTALLED_PROGRAMS : program.parent_path();
}

// Where the module is installed, for programs in that folder.
std::filesystem::path installedModule(const std::filesystem::path& programFolder) {
    return (programFolder / ATDP_INSTALLED_MODULES / kModuleFileName).lexically_normal();
}

// The first of the places that exists.
std::optional<std::string> firstPresent(std::initializer_list<std::filesystem::path> places) {
    for (const auto& place : places) {
        std::error_code ignored;
        if (std::filesystem::exists(place, ignored)) return place;
    }
    return std::nullopt;
}

}  // namespace

std::string defaultModulePath() {
    const std::filesystem::path programFolder = folderOfProgram();
    const std::filesystem::path installed = installedModule(programFolder);
    if (const auto path =
            firstPresent({programFolder / kModuleFileName,
                          programFolder.parent_path() / "lib" / kModuleFileName, installed})) {
        return *path;
    }
    throw Failure(kModuleFileName, "not found beside this program, in ../lib or at " +
                                       installed.string() + " (name it with --plugin)");
}

std::string modulePathBeside(const void* address) {
    Dl_info library{};
    if (dladdr(address, &library) == 0) throw Failure(kModuleFileName, "not found");
    const std::filesystem::path folder =
        std::filesystem::canonical(library.dli_fname).parent_path();
    const std::filesystem::path installed = installedModule(ATDP_INSTALLED_PROGRAMS);
    if (const auto path = firstPresent({folder / kModuleFileName, installed})) return *path;
    throw Failure(kModuleFileName,
                  "found neither in " + folder.string() + " nor at " + installed.string());
}

void PluginModule::LibraryCloser::operator()(void* library) const {
    dlclose(library);
}

template <class T>
T* PluginModule::symbol(const char* name) const {
    void* const address = dlsym(library_.get(), name);
    if (address == nullptr) {
        throw Failure(path_, "not a decoder module (" + std::string(name) + " is missing)");
    }
    return reinterpret_cast<T*>(address);
}

PluginModule::PluginModule(const std::string& path) : path_(path) {
    // An absolute path, since a bare name would be searched for among the system's libraries.
    const std::string absolutePath = std::filesystem::absolute(path);
    library_.reset(dlopen(absolutePath.c_str(), RTLD_NOW | RTLD_LOCAL));
    if (!library_) throw Failure(path, loadError(absolutePath));

    const auto entry = symbol<std::remove_pointer_t<ModuleEntry>>(kModuleEntryName);
    const PrincipalClass* const principal = entry(kModuleInterfaceNumber);
    if (principal == nullptr) {
        throw Failure(path, "made for another version of this program (interface " +
                                std::to_string(kModuleInterfaceNumber) + " is not spoken)");
    }
    symbol<decltype(AudioToolboxDecoderPluginSetLogSink)>("AudioToolboxDecoderPluginSetLogSink")(
        ModuleLog::receive, &log_);
    plugin_ = principal->initWithKey(kPluginKey);
    if (!plugin_) throw Failure(path, "the module refuses to make its plug-in");
}

std::vector<std::string> PluginModule::extensions() {
    const std::string_view key = *symbol<decltype(PLUGIN_KEY_EXTS)>("PLUGIN_KEY_EXTS");
    const std::unique_ptr<Properties> properties = plugin_->getProperties();
    if (!properties) throw std::bad_alloc();
    for (const auto& [name, value] : *properties) {
        const auto* const list = std::get_if<std::vector<std::string>>(&value);
        if (name == key && list != nullptr) return *list;
    }
    return {};
}

std::string PluginModule::thresholdKey() const {
    return *symbol<decltype(DECODER_OPTION_KEY_MP3_THREASHOLD_DB)>(
        "DECODER_OPTION_KEY_MP3_THREASHOLD_DB");
}

void PluginModule::setRelease(double release) {
    *symbol<decltype(NSAppKitVersionNumber)>("NSAppKitVersionNumber") = release;
}

}  // namespace atdp::host
