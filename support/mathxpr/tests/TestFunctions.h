#pragma once

#include <murvane/math/BasicFeatures.h>
#include <murvane/math/RangeFeature.h>
#include <murvane/mathxpr/SignalFeatureToFunctionAdaptorImpl.h>

#include <cstddef>
#include <string>
#include <vector>

/// The functions that the formulas of the tests call. All are registered by a static initialiser:
/// doubled, mean, temporalMean, previous, range, scaled, maximum, picky.
namespace testfunctions {

using Zantrix::Cloneable;
using Zantrix::StringVector;
using Zantrix::Math::DoubleVector;
namespace Xpr = Zantrix::Math::Xpr;

/// As the features of a library with a base class of its own: two ways lead to `SignalFeature`.
class FeatureBase : public virtual Zantrix::Math::SignalFeature {};

/// "doubled": the input times two. A feature that is itself a function; counts its work, and counts batches.
class DoubledFeature : public virtual FeatureBase, public Xpr::SignalFeatureFunctionAdaptorImpl {
public:
    DoubledFeature() : SignalFeatureFunctionAdaptorImpl("doubled", "x", 0) {}
    bool compute(const DoubleVector& in, DoubleVector& out) override;
    bool computeWindows(std::span<const DoubleVector> in, std::span<DoubleVector> out) override;
    Cloneable* clone() const override { return new DoubledFeature(*this); }

    static inline std::size_t s_uiWindows = 0;
    static inline std::size_t s_uiBatches = 0;
};

/// Adds the last value of the input before, at first 0. Cannot be reset.
class PreviousFeature : public virtual Zantrix::Math::SignalFeature {
public:
    bool compute(const DoubleVector& in, DoubleVector& out) override;
    Cloneable* clone() const override { return new PreviousFeature(*this); }

private:
    double m_dLast = 0.0;
};

/// The input times the product of a list of numbers, "scaled.factors", and of "scaled.gain", which may be missing.
class ScaledFeature : public virtual Zantrix::Math::SignalFeatureWithParameters {
public:
    bool configure(const Zantrix::ROConfiguration& config) override;
    bool compute(const DoubleVector& in, DoubleVector& out) override;
    Cloneable* clone() const override { return new ScaledFeature(*this); }

private:
    double m_dFactor = 1.0;
};

/// The input, which must not be empty.
class PickyFeature : public virtual Zantrix::Math::SignalFeature {
public:
    bool compute(const DoubleVector& in, DoubleVector& out) override;
    Cloneable* clone() const override { return new PickyFeature(*this); }
};

struct XprMean : Xpr::SignalFeatureToFunctionAdaptorImpl<Zantrix::Math::MeanFeature> {
    XprMean() : SignalFeatureToFunctionAdaptorImpl("mean", "x", 0) {}
};

struct XprTemporalMean : Xpr::SignalFeatureToFunctionAdaptorImpl<Zantrix::Math::TemporalMeanFeature> {
    XprTemporalMean() : SignalFeatureToFunctionAdaptorImpl("temporalMean", "x") {}
};

struct XprPrevious : Xpr::SignalFeatureToFunctionAdaptorImpl<PreviousFeature> {
    XprPrevious() : SignalFeatureToFunctionAdaptorImpl("previous", "x") {}
    bool hasMemory() const override { return true; }
};

struct XprPicky : Xpr::SignalFeatureToFunctionAdaptorImpl<PickyFeature> {
    XprPicky() : SignalFeatureToFunctionAdaptorImpl("picky", "x") {}
};

struct XprRange : Xpr::SignalFeatureWithParamAdaptorImpl<Zantrix::Math::RangeFeature> {
    XprRange() : SignalFeatureWithParamAdaptorImpl("range", "x", table()) {}
    static const Xpr::ParameterTable& table();
};

struct XprScaled : Xpr::SignalFeatureWithParamAdaptorImpl<ScaledFeature> {
    XprScaled() : SignalFeatureWithParamAdaptorImpl("scaled", "x", table()) {}
    static const Xpr::ParameterTable& table();
};

/// "maximum(a, b)": the larger of two vectors, element by element; written without the help of the feature adaptors.
class XprMaximum : public Xpr::FunctionAdaptor {
public:
    const char* getFunctionName() const override { return "maximum"; }
    StringVector getArgumentNames() const override { return {"a", "b"}; }
    std::vector<Xpr::FunctionParameter> getParameters() const override { return {}; }
    bool setParameters(const Xpr::ParameterValues& values) override { return values.empty(); }
    bool hasMemory() const override { return false; }
    bool resetMemory() override { return true; }
    bool evaluate(std::span<const Xpr::Windows> arguments, std::span<DoubleVector> out) override;
};

}  // namespace testfunctions
