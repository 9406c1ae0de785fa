#include "platform/app_kit.h"

double NSAppKitVersionNumber = 1138.0;
