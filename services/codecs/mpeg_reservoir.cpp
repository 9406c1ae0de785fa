#include "services/codecs/mpeg_reservoir.h"

#include <algorithm>

namespace atdp::services {

std::uint32_t MpegReservoir::reach() const {
    const std::uint64_t earliest = std::max(floor_, starts_[packets_ % kPackets]);
    return static_cast<std::uint32_t>(std::min<std::uint64_t>(end_ - earliest, maxReach_));
}

void MpegReservoir::add(Bytes soundData, std::uint32_t start) {
    floor_ = end_ - start;
    starts_[packets_++ % kPackets] = end_;
    end_ += soundData.size();
    if (soundData.size() < last_.size()) {
        std::move(last_.begin() + soundData.size(), last_.end(), last_.begin());
        std::copy(soundData.begin(), soundData.end(), last_.end() - soundData.size());
    } else {
        const Bytes tail = soundData.last(last_.size());
        std::copy(tail.begin(), tail.end(), last_.begin());
    }
}

}  // namespace atdp::services
