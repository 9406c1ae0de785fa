#include "services/text/charset.h"

#include <iconv.h>

#include <array>
#include <cerrno>
#include <cstdint>
#include <memory>

namespace atdp::services {
namespace {

constexpr auto kFailed = static_cast<std::size_t>(-1);

struct CloseConversion {
    void operator()(iconv_t conversion) const { iconv_close(conversion); }
};
using Conversion = std::unique_ptr<void, CloseConversion>;

Conversion openConversion(const char* charset) {
    const iconv_t conversion = iconv_open("UTF-8", charset);
    const bool failed = conversion == reinterpret_cast<iconv_t>(std::intptr_t{-1});
    return Conversion(failed ? nullptr : conversion);
}

}  // namespace

std::optional<std::string> fromCharset(std::string_view bytes, const char* charset) {
    const Conversion conversion = openConversion(charset);
    if (conversion == nullptr) return std::nullopt;
    std::string text;
    char* input = const_cast<char*>(bytes.data());  // iconv only reads it
    std::size_t inputBytes = bytes.size();
    while (inputBytes != 0) {
        std::array<char, 4096> piece;
        char* output = piece.data();
        std::size_t outputBytes = piece.size();
        const std::size_t replaced =
            iconv(conversion.get(), &input, &inputBytes, &output, &outputBytes);
        const bool pieceFull = replaced == kFailed && errno == E2BIG;
        if (replaced != 0 && !pieceFull) return std::nullopt;
        text.append(piece.data(), output);
    }
    return text;
}

}  // namespace atdp::services
