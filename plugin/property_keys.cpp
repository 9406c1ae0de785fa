#include "plugin/module.h"

const char* const PLUGIN_KEY_NAME = "name";
const char* const PLUGIN_KEY_VER = "version";
const char* const PLUGIN_KEY_IF_VER = "i/f version";
const char* const PLUGIN_KEY_PRIO = "priority";
const char* const PLUGIN_KEY_PLUG_TYPE = "plugin type";
const char* const PLUGIN_KEY_UI_TYPE = "ui type";
const char* const PLUGIN_KEY_CODEC_TYPE = "codec type";
const char* const PLUGIN_KEY_EXTS = "exts";
const char* const PLUGIN_KEY_FILTER_TYPE = "filter type";
const char* const PLUGIN_KEY_ACTION_TYPE = "action type";
