#include "shell/SamplingRate.h"

namespace Zantrix::Cli {

void warnOfRate(std::uint64_t rate, Diagnostics& diagnostics) {
    if (rate != c_uiTelephoneRate) {
        diagnostics.warning("has " + std::to_string(rate) + " Hz: spectral features take their bins to span 0 to " +
                            "4000 Hz, which holds at 8000 Hz only");
    }
}

}  // namespace Zantrix::Cli
