#pragma once

#include "features/Column.h"

#include <murvane/audio/computation/AudioFeatureComputerImpl.h>

#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace Zantrix::Cli {

/// What the library reports of each spectrum of a number of samples that is no power of two. It computes them all the
/// same.
inline constexpr std::string_view c_strOddSpectrum = "Assertion failed: isPowerOfTwo(n)";

/// Computes features and formulas of windows that follow each other in one input. Each input has a computer of its own:
/// no feature, in a formula or not, may remember the input before.
class RowComputer {
public:
    explicit RowComputer(std::vector<Column> columns);

    /// Computes a batch of windows.
    ///
    /// @param rows  one per window, replaced by its values: those of the features in their order, then those of the
    ///              formulas in theirs
    /// @return false when something fails, see `describeFailure`; nothing further works then
    bool compute(std::span<const Math::DoubleVector> windows, std::span<Math::DoubleVector> rows);

    /// "the feature NAME cannot be computed of `windows`", or the same of a formula, and why.
    ///
    /// @param windows  in words, such as "a window of 256 samples"
    /// @param record   what the library reported meanwhile, if nobody was shown that; "" for nothing
    std::string describeFailure(const std::string& windows, const std::string& record = "") const;

private:
    void findFailingFeature(std::span<const Math::DoubleVector> windows);
    void findFailingFormula();

    std::vector<Column> m_columns;
    Audio::FeatureComputerWithInputsImpl m_computer;
    Math::Xpr::ExpressionList m_formulas;
    std::string m_strFailed;
    std::string m_strWhy;
};

}  // namespace Zantrix::Cli
