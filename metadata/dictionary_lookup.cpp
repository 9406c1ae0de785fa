#include "metadata/dictionary_lookup.h"

namespace atdp {
namespace {

CFTypeRef firstValueOf(CFDictionaryRef dictionary, std::initializer_list<const char*> keys) {
    if (dictionary == nullptr) return nullptr;
    for (const char* key : keys) {
        CFTypeRef value = nullptr;
        if (CFDictionaryGetValueIfPresent(dictionary, key, &value)) return value;
    }
    return nullptr;
}

}  // namespace

const std::string* firstText(CFDictionaryRef dictionary, std::initializer_list<const char*> keys) {
    const CFTypeRef value = firstValueOf(dictionary, keys);
    return value == nullptr ? nullptr : textOf(value);
}

CFDictionaryRef firstDictionary(CFDictionaryRef dictionary,
                                std::initializer_list<const char*> keys) {
    const CFTypeRef value = firstValueOf(dictionary, keys);
    return value == nullptr ? nullptr : dictionaryOf(value);
}

}  // namespace atdp
