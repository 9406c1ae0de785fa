#pragma once

#include <functional>
#include <map>
#include <memory>
#include <string>
#include <string_view>
#include <utility>

#include "platform/core_audio_types.h"
#include "services/text_map.h"

namespace atdp::services {

// What stands behind every CFTypeRef.
class CFObject {
 public:
    virtual ~CFObject() = default;

    // What %@ shows in the log.
    virtual std::string description() const = 0;
};

class CFText final : public CFObject {
 public:
    explicit CFText(std::string text) : text_(std::move(text)) {}

    const std::string& text() const { return text_; }
    std::string description() const override { return text_; }

 private:
    std::string text_;
};

class CFDictionary final : public CFObject {
 public:
    CFDictionary() = default;
    explicit CFDictionary(const TextMap& texts);

    void set(const std::string& key, std::unique_ptr<CFObject> value);
    const CFObject* find(std::string_view key) const;  // or null
    std::string description() const override;

 private:
    std::map<std::string, std::unique_ptr<CFObject>, std::less<>> entries_;
};

// Copies a property out that is a dictionary; the client is its owner where this succeeds.
OSStatus copyDictionary(std::unique_ptr<CFDictionary> dictionary, std::uint32_t* dataBytes,
                        void* data);

}  // namespace atdp::services
