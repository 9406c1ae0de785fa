#include "host/opened_file.h"

#include <fcntl.h>
#include <sys/stat.h>

#include <cerrno>
#include <cstring>
#include <filesystem>
#include <new>

#include "host/descriptor.h"
#include "host/failure.h"

namespace atdp::host {
namespace {

std::string whyNoDecoder(const std::string& path) {
    if (const auto problem = whyUnreadable(path)) return *problem;
    std::error_code ignored;
    if (std::filesystem::file_size(path, ignored) == 0) return "the file is empty";
    return "no decoder for what is inside (not a sound file of a known kind, or damaged)";
}

}  // namespace

void DecoderCloser::operator()(SeekableFileDecoder* decoder) const {
    decoder->close();
    delete decoder;
}

std::string wordsForErrno(int number) {
    switch (number) {
        case ENOENT:
            return "no such file";
        case EACCES:
            return "permission denied";
        default:
            return std::strerror(number);
    }
}

std::optional<std::string> whyUnreadable(const std::string& path) {
    struct stat facts;
    if (::stat(path.c_str(), &facts) != 0) return wordsForErrno(errno);
    if (S_ISDIR(facts.st_mode)) return "is a directory";
    if (!S_ISREG(facts.st_mode)) return "is not a regular file";
    const Descriptor file(::open(path.c_str(), O_RDONLY | O_CLOEXEC));
    char first;
    if (file.get() < 0 || ::read(file.get(), &first, 1) < 0) return wordsForErrno(errno);
    return std::nullopt;
}

OpenedFile openFile(PluginModule& module, const std::string& path,
                    std::optional<double> thresholdDb) {
    const DecoderClass* const decoderClass = module.plugin().findDecoderClassByPath(path);
    if (decoderClass == nullptr) throw Failure(path, whyNoDecoder(path));

    OpenedFile file{path, decoderClass, {}};
    file.decoder.reset(decoderClass->make().release());
    if (!file.decoder) throw std::bad_alloc();
    Options options;
    if (thresholdDb) options.emplace(module.thresholdKey(), *thresholdDb);
    module.log().forget();
    if (file.decoder->openByPath(path, thresholdDb ? &options : nullptr) != DECODER_RESULT_OK) {
        throw Failure(path, module.log().reason("cannot be opened"));
    }
    return file;
}

}  // namespace atdp::host
