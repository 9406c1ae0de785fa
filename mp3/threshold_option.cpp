#include "mp3/threshold_option.h"

#include <charconv>

#include "decoder/option_keys.h"
#include "metadata/text_scan.h"

namespace atdp {
namespace {

// The decimal number at the front, after any space and a sign, whatever the locale; 0 where there
// is none. Words for numbers, such as "inf", are none.
double leadingNumber(std::string_view text) {
    text = withoutLeadingSpace(text);
    const bool hasPlus = text.starts_with('+');
    if (hasPlus) text.remove_prefix(1);
    const std::string_view digits = text.substr(!hasPlus && text.starts_with('-') ? 1 : 0);
    if (digits.find_first_of("0123456789.") != 0) return 0;
    double number = 0;
    std::from_chars(text.data(), text.data() + text.size(), number);
    return number;
}

}  // namespace

float silenceThreshold(const Options* options) {
    if (options == nullptr) return 0;
    const auto option = options->find(DECODER_OPTION_KEY_MP3_THREASHOLD_DB);
    if (option == options->end()) return 0;
    const auto* text = std::get_if<std::string>(&option->second);
    return static_cast<float>(text ? leadingNumber(*text) : std::get<double>(option->second));
}

}  // namespace atdp
