// The system log.
#pragma once

#include <initializer_list>
#include <variant>

#include "platform/core_foundation.h"
#include "platform/export.h"

// What a log line may show: a number for %ld, %lX and the like, or an object for %@.
using LogArgument = std::variant<long, CFTypeRef>;

void NSLogArguments(const char* format, std::initializer_list<LogArgument> arguments);

// Writes one line to the log. Any thread. `format` is text with printf conversions of long and,
// for an object, %@; a conversion without its argument is shown as it stands.
template <class... Arguments>
void NSLog(const char* format, const Arguments&... arguments) {
    NSLogArguments(format, {LogArgument(arguments)...});
}

// Receives each line, without a line end. It may be called on any thread that uses a decoder and
// must not throw.
using LogSink = void (*)(const char* line, void* context);

// Sends the log to `sink` from now on, or back to standard error when it is null. A host calls this
// before decoders run.
extern "C" ATDP_EXPORT void AudioToolboxDecoderPluginSetLogSink(LogSink sink, void* context);
