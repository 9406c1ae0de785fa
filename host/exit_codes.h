// What the program answers to the shell.
#pragma once

namespace atdp::host {

inline constexpr int kExitOk = 0;
inline constexpr int kExitFailed = 1;         // any file, the plug-in or the sound device failed
inline constexpr int kExitWrongUsage = 2;     // the command line made no sense
inline constexpr int kExitInterrupted = 130;  // stopped by a signal, as shells count it

}  // namespace atdp::host
