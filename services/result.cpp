#include "services/result.h"

namespace atdp::services {

OSStatus statusFor(Failure failure) {
    switch (failure) {
        case Failure::kUnreadable:
            return kStatusIoError;
        case Failure::kNotFound:
            return kStatusFileNotFound;
        case Failure::kNotPermitted:
            return kStatusNotPermitted;
        case Failure::kUnknownFileType:
            return kStatusUnknownFileType;
        case Failure::kDamaged:
            return kStatusDamagedFile;
        case Failure::kUnsupportedFormat:
            return kStatusUnsupportedFormat;
    }
    return kStatusInvalidParameter;
}

}  // namespace atdp::services
