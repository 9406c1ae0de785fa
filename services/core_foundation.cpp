#include "platform/core_foundation.h"

#include <cstring>
#include <filesystem>
#include <new>
#include <string>
#include <system_error>
#include <utility>

#include "services/core_foundation_object.h"
#include "services/edge.h"

namespace atdp::services {
namespace {

class Url final : public CFObject {
 public:
    explicit Url(std::string path) : path_(std::move(path)) {}

    const std::string& path() const { return path_; }

    // file:// and the absolute path, percent-encoded (RFC 3986).
    std::string description() const override {
        constexpr const char* kHexDigits = "0123456789ABCDEF";
        std::string text = "file://";
        for (const char character : absolutePath()) {
            const auto byte = static_cast<unsigned char>(character);
            if (byte != 0 && std::strchr(kUnescaped, character) != nullptr) {
                text += character;
            } else {
                text += '%';
                text += kHexDigits[byte >> 4];
                text += kHexDigits[byte & 15];
            }
        }
        return text;
    }

 private:
    // The path as it is where the working directory is gone.
    std::string absolutePath() const {
        std::error_code error;
        const std::string absolute = std::filesystem::absolute(path_, error).string();
        return error ? path_ : absolute;
    }

    static constexpr const char* kUnescaped =
        "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789-._~/";
    std::string path_;
};

const CFObject* objectOf(CFTypeRef object) {
    return static_cast<const CFObject*>(object);
}

}  // namespace

CFDictionary::CFDictionary(const TextMap& texts) {
    for (const auto& [key, text] : texts) set(key, std::make_unique<CFText>(text));
}

void CFDictionary::set(const std::string& key, std::unique_ptr<CFObject> value) {
    entries_[key] = std::move(value);
}

const CFObject* CFDictionary::find(std::string_view key) const {
    const auto entry = entries_.find(key);
    return entry == entries_.end() ? nullptr : entry->second.get();
}

std::string CFDictionary::description() const {
    std::string text = "{";
    for (const auto& [key, value] : entries_)
        text += " " + key + " = " + value->description() + ";";
    return text + " }";
}

OSStatus copyDictionary(std::unique_ptr<CFDictionary> dictionary, std::uint32_t* dataBytes,
                        void* data) {
    const CFObject* object = dictionary.get();
    const OSStatus status = copyProperty(&object, sizeof(object), dataBytes, data);
    if (status == noErr) dictionary.release();
    return status;
}

const std::string& pathOf(CFURLRef url) {
    return static_cast<const Url*>(reinterpret_cast<const CFObject*>(url))->path();
}

}  // namespace atdp::services

CFURLRef CFURLCreateFromFileSystemRepresentation(CFAllocatorRef, const std::uint8_t* buffer,
                                                 long length, bool) {
    using namespace atdp::services;
    if (buffer == nullptr || length <= 0) return nullptr;
    const auto bytes = static_cast<std::size_t>(length);
    if (std::memchr(buffer, 0, bytes) != nullptr) return nullptr;
    try {
        const CFObject* url = new Url(std::string(reinterpret_cast<const char*>(buffer), bytes));
        return reinterpret_cast<CFURLRef>(url);
    } catch (const std::bad_alloc&) {
        return nullptr;
    }
}

bool CFDictionaryGetValueIfPresent(CFDictionaryRef dictionary, std::string_view key,
                                   CFTypeRef* value) {
    using namespace atdp::services;
    const auto* entries = dynamic_cast<const CFDictionary*>(objectOf(dictionary));
    const CFObject* found = entries == nullptr ? nullptr : entries->find(key);
    if (found != nullptr && value != nullptr) *value = found;
    return found != nullptr;
}

const std::string* textOf(CFTypeRef object) {
    using namespace atdp::services;
    const auto* text = dynamic_cast<const CFText*>(objectOf(object));
    return text == nullptr ? nullptr : &text->text();
}

CFDictionaryRef dictionaryOf(CFTypeRef object) {
    using namespace atdp::services;
    const CFObject* dictionary = dynamic_cast<const CFDictionary*>(objectOf(object));
    return reinterpret_cast<CFDictionaryRef>(dictionary);
}

void CFRelease(CFTypeRef object) {
    delete atdp::services::objectOf(object);
}
