// The release of the platform that the plug-in believes it runs on.
#pragma once

#include "platform/export.h"

// The application framework's version number. From 1138.0 on, the platform's audio-file services
// report the tags of MPEG-4 files themselves. A host may set it before it asks for metadata.
extern "C" ATDP_EXPORT double NSAppKitVersionNumber;
