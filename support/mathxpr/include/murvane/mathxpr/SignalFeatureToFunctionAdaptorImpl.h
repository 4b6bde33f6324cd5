#pragma once

#include <murvane/core/CloneableObjPtr.h>
#include <murvane/mathxpr/FunctionAdaptor.h>

#include <type_traits>

/// Functions that wrap a feature which knows nothing of formulas. To make one, derive a class with a default
/// constructor and register `UserFunctionImpl` of it (Registry.h):
///
///     struct XprPeaks : SignalFeatureToFunctionAdaptorImpl<PeaksFeature> {
///         XprPeaks() : SignalFeatureToFunctionAdaptorImpl("peaks", "x", 0) {}
///     };
namespace Zantrix::Math::Xpr {

/// Owns one feature `F`, made with `new F` when the adaptor is constructed; a copy of the adaptor owns a clone of it,
/// in the same state.
template <typename F>
class MURVANE_API SignalFeatureToFunctionAdaptorBaseImpl : public SingleVariableFunctionImpl {
    static_assert(std::is_base_of_v<SignalFeature, F>);

public:
    /// The feature's name in formulas, which is the function's.
    static const char* sGetXprName() { return F::sGetXprName(); }

    /// True for features that are `Resettable`. An adaptor of a feature that keeps something from window to window
    /// and is not `Resettable` must override it to return true.
    bool hasMemory() const override { return std::is_base_of_v<Resettable, F>; }

    bool resetMemory() override {
        if constexpr (std::is_base_of_v<Resettable, F>) {
            return m_pFeature && m_pFeature->reset();
        } else {
            return true;
        }
    }

    /// The wrapped feature, owned by the adaptor; null when the feature of the adaptor that this one was copied from
    /// could not be cloned.
    F* getFeature() const { return m_pFeature.get(); }

protected:
    using SingleVariableFunctionImpl::SingleVariableFunctionImpl;

    bool evaluateVariable(Windows in, std::span<DoubleVector> out) override {
        return m_pFeature && m_pFeature->computeWindows(in, out);
    }

private:
    CloneableObjPtr<F> m_pFeature{new F};
};

/// The adaptor of features without parameters, and in general without a memory.
template <typename F>
class MURVANE_API SignalFeatureToFunctionAdaptorImpl : public SignalFeatureToFunctionAdaptorBaseImpl<F> {
protected:
    /// @param name,variable  literals (kept by pointer)
    /// @param parameters     null, which may be written 0: there are none
    SignalFeatureToFunctionAdaptorImpl(const char* name, const char* variable, std::nullptr_t parameters = nullptr)
        : SignalFeatureToFunctionAdaptorBaseImpl<F>(name, variable, parameters) {}
};

/// The adaptor of features whose parameters come from a configuration. The values of a call are handed to
/// `F::configure` under the keys of the parameter table, such as "spectralrange.frequencyHz".
template <typename F>
class MURVANE_API SignalFeatureWithParamAdaptorImpl : public SignalFeatureToFunctionAdaptorBaseImpl<F> {
    static_assert(std::is_base_of_v<SignalFeatureWithParameters, F>);

public:
    bool setParameters(const ParameterValues& values) override {
        F* pFeature = this->getFeature();
        return pFeature != nullptr && pFeature->configure(makeConfiguration(this->getParameterTable()->prefix, values));
    }

protected:
    /// @param name,variable  literals (kept by pointer)
    /// @param parameters     prefix of the keys, and the parameters that calls may give; must outlive the adaptor
    SignalFeatureWithParamAdaptorImpl(const char* name, const char* variable, const ParameterTable& parameters)
        : SignalFeatureToFunctionAdaptorBaseImpl<F>(name, variable, &parameters) {}
};

}  // namespace Zantrix::Math::Xpr
