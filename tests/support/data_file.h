// Files under tests/data.
#pragma once

#include <fstream>
#include <iterator>
#include <string>

namespace atdp::test {

inline std::string dataFile(const std::string& name) {
    return std::string(ATDP_TEST_DATA) + "/" + name;
}

inline std::string bytesOfFile(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
}

inline std::string dataBytes(const std::string& name) {
    return bytesOfFile(dataFile(name));
}

}  // namespace atdp::test
