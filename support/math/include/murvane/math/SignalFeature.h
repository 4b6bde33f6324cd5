#pragma once

#include <murvane/core/Object.h>
#include <murvane/infra/ROConfiguration.h>
#include <murvane/math/DoubleVector.h>

#include <span>

/// The interfaces of features. All paths to `SignalFeature` are virtual, so that a feature that reaches it twice has
/// one.
///
///     Cloneable
///     └── SignalFeature                    compute()
///         ├── SignalFeatureWithParameters  configure()
///         └── SignalFeatureWithMemory      reset(), from Resettable
namespace Zantrix::Math {

/// Turns one vector, such as a window of samples or a spectrum, into numbers.
///
/// A feature object is used by one thread at a time; `clone()` gives each thread its own, in the same state.
class MURVANE_API SignalFeature : public virtual Cloneable {
public:
    /// Computes the feature of one input.
    ///
    /// @param in   the input; never changed, unless it is `out` as well
    /// @param out  the values are appended; what it held before stays. It may be `in` itself: features of this library
    ///             then append the values that they compute of what it held before
    /// @return false when the feature cannot be computed of this input
    virtual bool compute(const DoubleVector& in, DoubleVector& out) = 0;

    /// Computes the feature of several inputs in their order, with the results of as many calls of `compute`, to
    /// the bit. Features that gain from seeing several windows side by side override it.
    ///
    /// @param in   the inputs
    /// @param out  as many vectors; the values of `in[i]` are appended to `out[i]`, which may be `in[i]` itself, but no
    ///             other input
    /// @return false as soon as one input fails; what stands in `out`, and the memory of a feature that has one,
    ///         are then unspecified
    virtual bool computeWindows(std::span<const DoubleVector> in, std::span<DoubleVector> out);
};

/// A feature with parameters that can be read from a configuration.
class MURVANE_API SignalFeatureWithParameters : public virtual SignalFeature {
public:
    /// Reads the parameters; false, after a log record, when they are absent or invalid.
    virtual bool configure(const ROConfiguration& config) = 0;
};

/// A feature whose values depend on earlier inputs, until `reset()`.
class MURVANE_API SignalFeatureWithMemory : public virtual SignalFeature, public virtual Resettable {};

}  // namespace Zantrix::Math
