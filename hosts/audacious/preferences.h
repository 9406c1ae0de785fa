// The page of settings in the player, and the settings.
#pragma once

#include <libaudcore/preferences.h>

#include <optional>

namespace atdp::audacious {

extern const PluginPreferences kPreferences;

// Gives the settings their values where the user has set none. To be called first.
void setDefaultPreferences();

// Below which level, in decibels relative to full scale, silence at the ends of MPEG files is cut;
// nothing when it is to stay. Any thread.
std::optional<double> silenceThreshold();

}  // namespace atdp::audacious
