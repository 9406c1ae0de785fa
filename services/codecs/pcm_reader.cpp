#include "services/codecs/pcm_reader.h"

#include <algorithm>
#include <utility>

#include "services/limits.h"

namespace atdp::services {

PcmReader::PcmReader(std::shared_ptr<ByteSource> source, ByteRange data,
                     const AudioStreamBasicDescription& format, PcmConversion conversion)
    : blocks_(std::move(source), kReadBlockBytes, kBytesAfterSeek),
      data_(data),
      bytesPerFrame_(format.mBytesPerFrame),
      channels_(format.mChannelsPerFrame),
      conversion_(conversion),
      position_(data.offset) {}

bool PcmReader::read(float* samples, std::uint32_t* frames) {
    const std::uint32_t wanted = *frames;
    std::uint32_t done = 0;
    while (done < wanted && position_ < data_.end()) {
        const auto bytes = blocks_.at(position_, bytesPerFrame_);
        // The frame was there when the file was opened: the file has shrunk, or the disk fails.
        if (!bytes || bytes->size() < bytesPerFrame_) {
            if (done == 0) return false;
            break;
        }
        const std::uint64_t held =
            std::min<std::uint64_t>(bytes->size(), data_.end() - position_) / bytesPerFrame_;
        const auto count = static_cast<std::uint32_t>(std::min<std::uint64_t>(wanted - done, held));
        conversion_(bytes->data(), samples + std::size_t{done} * channels_,
                    std::size_t{count} * channels_);
        position_ += std::uint64_t{count} * bytesPerFrame_;
        done += count;
    }
    *frames = done;
    return true;
}

void PcmReader::seek(std::uint64_t frame) {
    const std::uint64_t last = data_.bytes / bytesPerFrame_;
    position_ = data_.offset + std::min(frame, last) * bytesPerFrame_;
}

}  // namespace atdp::services
