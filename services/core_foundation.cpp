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

}  // namespace

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

void CFRelease(CFTypeRef object) {
    delete static_cast<const atdp::services::CFObject*>(object);
}
