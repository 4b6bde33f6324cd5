#include "Rotation.h"

#include <murvane/core/Assertion.h>
#include <murvane/math/MathFourierTransform.h>
#include <murvane/math/PowerOfTwoTransform.h>

#include <bit>
#include <vector>

namespace Zantrix::Math {

namespace {

// The transform of any number of values, by its definition; n^2 steps.
void transformByDefinition(std::span<double> values) {
    const std::size_t n = values.size();
    std::vector<Rotation> rotations(n);
    for (std::size_t i = 0; i < n; ++i) {
        rotations[i] = rotationBy(i, n);
    }
    const std::vector<double> input(values.begin(), values.end());
    const auto putTerm = [&](std::size_t k, double& real, double* imaginary) {
        double sumReal = 0.0;
        double sumImaginary = 0.0;
        std::size_t turn = 0;
        for (const double value : input) {
            sumReal += value * rotations[turn].cosine;
            sumImaginary -= value * rotations[turn].sine;
            turn += k;
            turn -= turn >= n ? n : 0;
        }
        real = sumReal;
        if (imaginary != nullptr) {
            *imaginary = sumImaginary;
        }
    };
    putTerm(0, values[0], nullptr);
    for (std::size_t k = 1; 2 * k + 1 < n; ++k) {
        putTerm(k, values[2 * k], &values[2 * k + 1]);
    }
    if (n % 2 == 0) {
        putTerm(n / 2, values[1], nullptr);
    } else if (n > 1) {
        putTerm((n - 1) / 2, values[n - 1], &values[1]);
    }
}

}  // namespace

void realFourierTransform(std::span<double> values) {
    const std::size_t n = values.size();
    if (!Assertion(std::has_single_bit(n), "isPowerOfTwo(n)", "MathFourierTransform", __LINE__)) {
        if (n > 0) {
            transformByDefinition(values);
        }
        return;
    }
    if (n == 1) {
        return;
    }
    const TransformTables& tables = transformTables(n);
    bitReverse(values.data(), tables);
    transformBitReversed(values.data(), tables);
    separateRealTerms(values.data(), tables);
}

}  // namespace Zantrix::Math
