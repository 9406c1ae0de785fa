#include "services/codecs/pcm_reader.h"

#include <algorithm>
#include <utility>

#include "services/limits.h"

namespace atdp::services {

PcmReader::PcmReader(std::shared_ptr<ByteSource> source, ByteRange data,
                     const AudioStreamBasicDescription& format, PcmConversion conversion)
    : source_(std::move(source)),
      data_(data),
      bytesPerFrame_(format.mBytesPerFrame),
      channels_(format.mChannelsPerFrame),
      conversion_(conversion),
      block_(kReadBlockBytes / bytesPerFrame_ * bytesPerFrame_),
      held_{data.offset, 0},
      position_(data.offset) {}

Result<std::uint32_t> PcmReader::read(float* samples, std::uint32_t frames) {
    std::uint32_t done = 0;
    while (done < frames && position_ < data_.end()) {
        if (position_ == held_.end() && !fillBlock()) {
            if (done == 0) return Failure::kUnreadable;
            break;
        }
        const std::uint64_t held = (held_.end() - position_) / bytesPerFrame_;
        const auto count = static_cast<std::uint32_t>(std::min<std::uint64_t>(frames - done, held));
        conversion_(block_.data() + (position_ - held_.offset),
                    samples + std::size_t{done} * channels_, std::size_t{count} * channels_);
        position_ += std::uint64_t{count} * bytesPerFrame_;
        done += count;
    }
    return done;
}

// Reads on at the position. False when not one frame is there: the data was there when the file
// was opened, so the file has shrunk or the disk fails.
bool PcmReader::fillBlock() {
    held_ = {position_, 0};
    const std::uint64_t wanted = std::min<std::uint64_t>(block_.size(), data_.end() - position_);
    const auto got = source_->readAt(position_, std::span(block_).first(wanted));
    if (!got || *got < bytesPerFrame_) return false;
    held_.bytes = *got / bytesPerFrame_ * bytesPerFrame_;
    return true;
}

void PcmReader::seek(std::uint64_t frame) {
    const std::uint64_t last = data_.bytes / bytesPerFrame_;
    position_ = data_.offset + std::min(frame, last) * bytesPerFrame_;
    if (position_ < held_.offset || position_ > held_.end()) held_ = {position_, 0};
}

}  // namespace atdp::services
