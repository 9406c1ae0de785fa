#include "services/codecs/alac_kernels.h"

#include "services/codecs/alac_prediction.h"
#include "services/codecs/alac_residuals.h"

namespace atdp::services {

const AlacKernels& plainAlacKernels() {
    static constexpr AlacKernels kKernels{readAlacResidualsBody, predictAlac};
    return kKernels;
}

const AlacKernels& bestAlacKernels() {
    const AlacKernels* avx2 = avx2AlacKernels();
    return avx2 ? *avx2 : plainAlacKernels();
}

}  // namespace atdp::services
