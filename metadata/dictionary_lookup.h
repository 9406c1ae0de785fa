// Looking values up in the platform's dictionaries.
#pragma once

#include <initializer_list>
#include <string>

#include "platform/core_foundation.h"

namespace atdp {

// The first of these keys that the dictionary holds decides: its value where it is text, or where
// it is a dictionary; null where it is something else. Null, too, when the dictionary holds none of
// the keys or is null itself.
const std::string* firstText(CFDictionaryRef dictionary, std::initializer_list<const char*> keys);
CFDictionaryRef firstDictionary(CFDictionaryRef dictionary,
                                std::initializer_list<const char*> keys);

}  // namespace atdp
