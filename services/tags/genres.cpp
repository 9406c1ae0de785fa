#include "services/tags/genres.h"

#include <id3v1genres.h>

namespace atdp::services {

std::string genreOfNumber(int number) {
    return TagLib::ID3v1::genre(number).to8Bit(true);
}

}  // namespace atdp::services
