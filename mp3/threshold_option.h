// The option that asks for silence to be cut.
#pragma once

#include "decoder/protocols.h"

namespace atdp {

// Decibels relative to full scale; 0, which asks for nothing, when the option is not there or holds
// no number that can be told. `options` may be null.
float silenceThreshold(const Options* options);

}  // namespace atdp
