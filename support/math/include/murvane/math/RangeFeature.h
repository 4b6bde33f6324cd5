#pragma once

#include <murvane/math/SignalFeature.h>

#include <cstddef>
#include <string>

namespace Zantrix::Math {

/// "RANGE(start,length)": a slice of the input.
class MURVANE_API RangeFeature : public virtual SignalFeatureWithParameters {
public:
    /// An empty slice.
    RangeFeature() = default;
    RangeFeature(std::size_t startIndex, std::size_t length);

    /// Reads "range.startIndex" and "range.length".
    ///
    /// @return false when one of them is absent or negative; the slice then stays as it was
    bool configure(const ROConfiguration& config) override;

    /// Appends in[startIndex .. startIndex + length - 1]; false, and nothing appended, when the slice does not lie
    /// within the input.
    bool compute(const DoubleVector& in, DoubleVector& out) override;

    Cloneable* clone() const override;

    /// Reads one unsigned integer parameter. One that is absent is reported at WARN on "murvane.math.RangeFeature".
    ///
    /// @return false when the key is absent or its value negative; `value` is then unchanged
    static bool extractConfigParam(const ROConfiguration& config, const std::string& key, unsigned int& value);

private:
    std::size_t m_uiStartIndex = 0;
    std::size_t m_uiLength = 0;
};

}  // namespace Zantrix::Math
