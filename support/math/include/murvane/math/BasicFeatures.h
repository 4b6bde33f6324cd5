#pragma once

#include <murvane/math/SignalFeature.h>

#include <cstddef>
#include <cstdint>

/// The mathematics library's own features, built by `MathSignalFeatureFactory`.
///
///     SignalFeature
///     ├── AmplitudeFeature
///     ├── MeanFeature
///     └── SignalFeatureWithMemory
///         ├── TemporalMeanFeature
///         └── SlidingWindowFeature
namespace Zantrix::Math {

/// "AMPLITUDE": the input itself.
class MURVANE_API AmplitudeFeature : public virtual SignalFeature {
public:
    bool compute(const DoubleVector& in, DoubleVector& out) override;
    Cloneable* clone() const override;
};

/// "MEAN": the arithmetic mean of the input, one value; 0.0 for an empty one.
class MURVANE_API MeanFeature : public virtual SignalFeature {
public:
    bool compute(const DoubleVector& in, DoubleVector& out) override;
    Cloneable* clone() const override;
};

/// "TEMPORALMEAN": the mean, value by value, of all inputs since construction or the last reset, the current one
/// included. An input of another length than the first is refused and not counted.
class MURVANE_API TemporalMeanFeature : public virtual SignalFeatureWithMemory {
public:
    bool compute(const DoubleVector& in, DoubleVector& out) override;
    bool reset() override;
    Cloneable* clone() const override;

private:
    DoubleVector m_vSum;
    std::uint64_t m_uiCount = 0;
};

/// "SLIDINGWINDOW(n)": the last n input values, oldest first, the current ones included; fewer while fewer were seen.
/// An input of several values enters them in order.
class MURVANE_API SlidingWindowFeature : public virtual SignalFeatureWithMemory {
public:
    /// @param length  how many values are kept; of 0 nothing is kept and nothing appended
    explicit SlidingWindowFeature(std::size_t length);

    bool compute(const DoubleVector& in, DoubleVector& out) override;
    bool reset() override;
    Cloneable* clone() const override;

private:
    std::size_t m_uiLength;
    DoubleVector m_vValues;  // oldest first, never more than m_uiLength
};

}  // namespace Zantrix::Math
