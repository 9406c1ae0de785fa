#pragma once

#include <algorithm>
#include <cstring>
#include <string>
#include <utility>

#include "services/io/byte_source.h"

namespace atdp::test {

// A file in memory.
class MemorySource final : public services::ByteSource {
 public:
    explicit MemorySource(std::string bytes) : bytes_(std::move(bytes)) {}

    std::uint64_t sizeBytes() const override { return bytes_.size(); }

    services::Result<std::size_t> readAt(std::uint64_t offset, std::span<std::byte> out) override {
        if (offset >= bytes_.size()) return std::size_t{0};
        const std::size_t count = std::min<std::size_t>(out.size(), bytes_.size() - offset);
        std::memcpy(out.data(), bytes_.data() + offset, count);
        return count;
    }

 private:
    std::string bytes_;
};

}  // namespace atdp::test
