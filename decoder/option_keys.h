// Keys of the options that openByPath takes.
#pragma once

#include "platform/export.h"

// Silence threshold of MPEG files in decibels relative to full scale; the text is "mp3 threashold
// db", spelled so.
extern "C" ATDP_EXPORT const char* const DECODER_OPTION_KEY_MP3_THREASHOLD_DB;
