// The Japanese encodings, to UTF-8.
#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace atdp::services {

// As Windows has it: with half-width katakana and the additions of NEC and IBM. The bytes 0x80,
// 0xA0 and 0xFD to 0xFF start no character.
std::optional<std::string> fromShiftJis(std::string_view bytes);

// Without the control characters 0x80 to 0x9F, which no text has and text in other encodings has
// often.
std::optional<std::string> fromEucJp(std::string_view bytes);

// The text may end in any character set. An escape that selects none of them is refused.
std::optional<std::string> fromIso2022Jp(std::string_view bytes);

}  // namespace atdp::services
