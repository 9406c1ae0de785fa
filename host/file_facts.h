// What an open file says of itself, for people and for programs.
#pragma once

#include <nlohmann/json.hpp>
#include <string>

#include "host/opened_file.h"

namespace atdp::host {

std::string factsAsText(OpenedFile& file);
nlohmann::ordered_json factsAsJson(OpenedFile& file);

}  // namespace atdp::host
