#include "hosts/audacious/preferences.h"

#include <libaudcore/runtime.h>

namespace atdp::audacious {
namespace {

constexpr const char* kSection = "audiotoolbox";
constexpr const char* kCutSilence = "cut_silence";
constexpr const char* kThresholdDb = "silence_threshold_db";

const char* const kDefaults[] = {kCutSilence, "FALSE", kThresholdDb, "-60", nullptr};

// From the noise of 20 bits to where music would be cut. 0 would mean off to the decoder.
constexpr WidgetVSpin kThresholdSpin = {-120, -20, 1, "dB"};

const PreferencesWidget kWidgets[] = {
    WidgetLabel("<b>Silence at the ends of MPEG audio files</b>"),
    WidgetCheck("Cut what is quieter than a threshold", WidgetBool(kSection, kCutSilence)),
    WidgetSpin("Threshold:", WidgetFloat(kSection, kThresholdDb), kThresholdSpin, WIDGET_CHILD),
    WidgetLabel("Where a file tells how many frames its encoder added, exactly those\n"
                "are cut: known gapless counts win over the threshold.\n"
                "At most one second is cut at each end."),
    WidgetLabel("A change counts from the next song on."),
};

}  // namespace

const PluginPreferences kPreferences = {{kWidgets}, nullptr, nullptr, nullptr};

void setDefaultPreferences() {
    aud_config_set_defaults(kSection, kDefaults);
}

std::optional<double> silenceThreshold() {
    if (!aud_get_bool(kSection, kCutSilence)) return std::nullopt;
    return aud_get_double(kSection, kThresholdDb);
}

}  // namespace atdp::audacious
