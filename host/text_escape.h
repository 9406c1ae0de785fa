// Text from files and paths, made fit to show. A byte that cannot be shown becomes the four
// characters \xNN.
#pragma once

#include <string>
#include <string_view>

namespace atdp::host {

// The text with every byte that is not part of valid UTF-8 escaped.
std::string validUtf8(std::string_view text);

// The same, with control characters escaped as well, so that a tag cannot drive the terminal.
std::string printableText(std::string_view text);

// printableText() as text in XML.
std::string xmlText(std::string_view text);

}  // namespace atdp::host
