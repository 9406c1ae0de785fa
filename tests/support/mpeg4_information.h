// What a program reads of an item list.
#pragma once

#include <string>

#include "services/tags/mpeg4_information.h"
#include "tests/support/id3_builder.h"
#include "tests/support/memory_source.h"
#include "tests/support/mpeg4_builder.h"

namespace atdp::test {

inline services::TextMap information(const std::string& items, bool isFullAtom = true) {
    const std::string list = fullAtom("hdlr", zeros(20)) + atom("ilst", items);
    Mpeg4Builder file;
    file.userData = atom("udta", isFullAtom ? fullAtom("meta", list) : atom("meta", list));
    MemorySource source(file.bytes());
    return services::readMpeg4Information(source);
}

}  // namespace atdp::test
