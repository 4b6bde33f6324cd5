#pragma once

#include <murvane/core/Object.h>

#include <cstddef>
#include <cstdint>
#include <vector>

/// Window shapes: fixed tables of weights that a feature multiplies into the samples before a transform.
///
///     Cloneable
///     └── SignalWindow
///         └── SignalWindowImpl   rectangular
///             └── HannWindow
namespace Zantrix::Audio {

class MURVANE_API SignalWindow : public virtual Cloneable, public virtual Object {
public:
    /// All weights, one per sample.
    virtual const std::vector<double>& getWeights() const = 0;

    /// The weight of one sample. A sample out of range is reported as a failed assertion and goes unweighted: 1.0.
    virtual double getWeight(std::size_t in_uiSampleIndex) const = 0;

    /// The number of samples. A `double`, since the formulas of window shapes reckon with it, and shapes defined in
    /// programs return it as one.
    virtual double getSize() const = 0;
};

/// Owns the table of weights; all are 1.0 unless a derived shape fills it otherwise. Immutable once constructed, so
/// that threads may share it.
class MURVANE_API SignalWindowImpl : public SignalWindow {
public:
    const std::vector<double>& getWeights() const override { return m_vWeights; }
    double getWeight(std::size_t in_uiSampleIndex) const override;
    double getSize() const override { return static_cast<double>(m_uiWindowSize); }

protected:
    explicit SignalWindowImpl(std::size_t uiWindowSize);

    std::uint64_t m_uiWindowSize;
    std::vector<double> m_vWeights;
};

/// The symmetric Hann shape: w[i] = (1 - cos(2 pi i / (N - 1))) / 2, zero at both ends. A window of one sample has the
/// weight NaN, as the formula gives it.
class MURVANE_API HannWindow : public SignalWindowImpl {
public:
    explicit HannWindow(std::size_t uiWindowSize);

    Cloneable* clone() const override;
};

}  // namespace Zantrix::Audio
