// The smallest complete host: minimal_host MODULE FILE
#include <dlfcn.h>

#include <iostream>
#include <vector>

#include "plugin/module.h"

static int fail(const char* reason) {
    std::cerr << reason << '\n';
    return 1;
}

static int decode(void* library, const char* path) {
    // The entry comes first: it answers null when the module was made for other headers.
    const auto entry = reinterpret_cast<atdp::ModuleEntry>(dlsym(library, atdp::kModuleEntryName));
    const auto* principal = entry != nullptr ? entry(atdp::kModuleInterfaceNumber) : nullptr;
    const auto plugin = principal != nullptr ? principal->initWithKey(atdp::kPluginKey) : nullptr;
    if (!plugin) return fail("not a module for this host");

    // What is inside the file decides, not its name.
    const atdp::DecoderClass* found = plugin->findDecoderClassByPath(path);
    const auto decoder = found != nullptr ? found->make() : nullptr;
    if (!decoder) return fail("no decoder for this file");
    if (decoder->openByPath(path, nullptr) != atdp::DECODER_RESULT_OK) {
        decoder->close();  // after a failed open as well
        return fail("the file cannot be opened");
    }
    const auto channels = static_cast<std::uint32_t>(decoder->getChannels());
    std::cout << "class: " << found->name << "\nrate: " << decoder->getSamplingRate()
              << "\nchannels: " << channels << "\nduration: " << decoder->getDuration() << " ns\n";

    // Text is UTF-8; a number keeps the kind that it has in the file.
    const auto metadata = decoder->getMetaData();
    for (const auto& fact : metadata ? *metadata : atdp::MetadataList()) {
        std::cout << fact.key << ": ";
        std::visit([](const auto& value) { std::cout << value << '\n'; }, fact.value);
    }

    // Ask in whole frames: sizes count floats. Fewer than asked for is the end.
    std::vector<float> samples(std::size_t{decoder->getPreferredBufferSize() + 1} * channels);
    std::uint64_t frames = 0;
    std::int32_t result = atdp::DECODER_RESULT_OK;
    for (auto size = static_cast<std::uint32_t>(samples.size());
         result == atdp::DECODER_RESULT_OK && size == samples.size(); frames += size / channels) {
        result = decoder->getNextSamples(samples.data(), &size);  // a player plays them here
    }
    std::cout << "frames: " << frames << '\n';
    decoder->close();
    return result == atdp::DECODER_RESULT_OK ? 0 : fail("the file is damaged");
}

int main(int argc, char** argv) {
    if (argc != 3) return fail("usage: minimal_host MODULE FILE");
    void* library = dlopen(argv[1], RTLD_NOW | RTLD_LOCAL);
    if (library == nullptr) return fail(dlerror());
    const int exitCode = decode(library, argv[2]);
    dlclose(library);  // only now that nothing of the module lives
    return exitCode;
}
