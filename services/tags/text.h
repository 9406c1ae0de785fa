// The text of tags as UTF-8. A NUL stays where it is: what it ends or separates is the caller's to
// say.
#pragma once

#include <string>
#include <string_view>

namespace atdp::services {

// Text whose encoding is not known, or stated by writers that often put another one there: UTF-8
// where it is valid UTF-8, which text in other encodings is next to never, else Windows-1252. That
// is ISO-8859-1 with characters where the latter has controls; its five undefined bytes stay
// controls.
std::string fromUtf8OrWindows1252(std::string_view bytes);

// The values that NULs separate, without empty ones, as "A; B".
std::string joinedValues(std::string_view values);

// The year of a date such as 2004-05-06; what does not start as one stays as it is.
std::string yearOf(const std::string& date);

}  // namespace atdp::services
