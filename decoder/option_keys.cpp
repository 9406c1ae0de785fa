#include "decoder/option_keys.h"

const char* const DECODER_OPTION_KEY_MP3_THREASHOLD_DB = "mp3 threashold db";
