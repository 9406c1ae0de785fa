// Sound files of one kind, from the search for the sound to the samples. Which kind, the corpus
// decides.
#include "fuzz/input.h"
#include "fuzz/sound_check.h"

// The first four bytes choose where to play from and how to convert; the rest is the file.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
    atdp::fuzz::Input input(bytes, size);
    const auto choices = input.take<std::uint32_t>();
    atdp::fuzz::checkSound(input.rest(), choices);
    return 0;
}
