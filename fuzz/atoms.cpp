// The reader of MPEG-4 atoms, which older releases of the platform need for tags.
#include "fuzz/bytes_read.h"
#include "fuzz/contract.h"
#include "fuzz/input.h"
#include "fuzz/memory_file.h"
#include "mp4/atom_analysis.h"
#include "mp4/atom_reader.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
    using namespace atdp;
    fuzz::Input input(bytes, size);
    const auto time = input.take<std::uint32_t>();
    const fuzz::MemoryFile file(input.rest());
    fuzz::ReadAllowance allowance;
    allowance.grant(2, file);  // headers, then bodies
    const std::scoped_lock reading(atomReaderLock);
    fuzz::require(iAnalizeM4aFile(file.path()) == 0, "a file that opens is analysed");
    std::uint32_t sample = 0;
    std::uint32_t sampleBytes = 0;
    const long position = lBitStreamPosition(time, &sample, &sampleBytes);
    fuzz::require(position >= -1, "a position is a position or none");
    fuzz::require(position >= 0 || sampleBytes == 0, "no sample has no bytes");
    return 0;
}
