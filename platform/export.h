// Marks what a host may look up in the module; everything else in it is hidden.
#pragma once

#define ATDP_EXPORT __attribute__((visibility("default")))
