#include "services/sound_file.h"

#include <utility>

#include "services/codecs/pcm_reader.h"
#include "services/containers/recognition.h"
#include "services/io/file_source.h"

namespace atdp::services {

Result<std::shared_ptr<SoundFile>> SoundFile::open(const std::string& path) {
    auto source = openFileSource(path);
    if (!source) return source.failure();
    const auto description = describeSound(**source);
    if (!description) return description.failure();
    return std::shared_ptr<SoundFile>(new SoundFile(std::move(*source), *description));
}

Result<std::unique_ptr<FrameReader>> SoundFile::makeReader() const {
    if (const PcmConversion conversion = pcmConversionFor(description_.format))
        return std::unique_ptr<FrameReader>(std::make_unique<PcmReader>(
            source_, description_.data, description_.format, conversion));
    return Failure::kUnsupportedFormat;
}

}  // namespace atdp::services
