#include <murvane/math/SignalFeature.h>

namespace Zantrix::Math {

bool SignalFeature::computeWindows(std::span<const DoubleVector> in, std::span<DoubleVector> out) {
    for (std::size_t i = 0; i < in.size(); ++i) {
        if (!compute(in[i], out[i])) {
            return false;
        }
    }
    return true;
}

}  // namespace Zantrix::Math
