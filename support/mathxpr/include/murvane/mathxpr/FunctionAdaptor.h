#pragma once

#include <murvane/core/MemAccount.h>
#include <murvane/core/StringVector.h>
#include <murvane/math/SignalFeature.h>
#include <murvane/mathxpr/FunctionParameter.h>

#include <span>
#include <string>
#include <vector>

/// Features as functions of formulas.
///
///     Object
///     └── FunctionAdaptor                  name, arguments, parameters, memory, evaluation
///         └── SingleVariableFunctionImpl   one variable
///             ├── SignalFeatureFunctionAdaptorImpl, also a SignalFeature
///             └── SignalFeatureToFunctionAdaptorBaseImpl<F>   (SignalFeatureToFunctionAdaptorImpl.h)
///                 ├── SignalFeatureToFunctionAdaptorImpl<F>
///                 └── SignalFeatureWithParamAdaptorImpl<F>
namespace Zantrix::Math::Xpr {

/// The same vector, a window of samples or something computed of it, of several windows in their order.
using Windows = std::span<const DoubleVector>;

/// What an expression function embeds: something that can be evaluated, and how formulas write it.
class MURVANE_API FunctionAdaptor : public virtual Object {
public:
    MURVANE_MEM_ACCOUNT("FunctionAdaptor")

    /// The name that formulas call it by, such as "harmonicProduct".
    virtual const char* getFunctionName() const = 0;

    /// The names of its arguments, in order.
    virtual StringVector getArgumentNames() const = 0;

    /// Its parameters, in order; none for most functions.
    virtual std::vector<FunctionParameter> getParameters() const = 0;

    /// Sets parameters. Called before the first evaluation, at most once, with values of the declared names and kinds.
    ///
    /// @return false when the function refuses them; it is then not to be evaluated
    virtual bool setParameters(const ParameterValues& values) = 0;

    /// Whether its values depend on the windows seen before. Such a function is evaluated anew at each of its
    /// occurrences; the others may be evaluated once for all occurrences that see the same argument.
    virtual bool hasMemory() const = 0;

    /// Brings the memory back to its initial state, parameters kept. True where there is none.
    ///
    /// A memory that the wrapped feature does not let reset stays as it is, and that too is true: features evaluated
    /// by name are left alone in the same way.
    virtual bool resetMemory() = 0;

    /// Evaluates the function window by window, in order.
    ///
    /// @param arguments  the windows of each argument, all as many as `out` has vectors
    /// @param out        the values of window i are appended to `out[i]`
    /// @return false as soon as one window fails; what stands in `out`, and the memory, are then unspecified
    virtual bool evaluate(std::span<const Windows> arguments, std::span<DoubleVector> out) = 0;
};

/// A function of one variable.
class MURVANE_API SingleVariableFunctionImpl : public virtual FunctionAdaptor {
public:
    const char* getFunctionName() const override;
    StringVector getArgumentNames() const override;
    std::vector<FunctionParameter> getParameters() const override;

    /// Takes no value at all; functions with parameters override it.
    bool setParameters(const ParameterValues& values) override;

    /// Refuses anything but one argument.
    bool evaluate(std::span<const Windows> arguments, std::span<DoubleVector> out) override;

protected:
    /// @param name,variable  literals (kept by pointer)
    /// @param parameters     what the function declares; must outlive it. Null, which may be written 0: no parameter.
    SingleVariableFunctionImpl(const char* name, const char* variable, const ParameterTable* parameters = nullptr)
        : m_szName(name), m_szVariable(variable), m_pParameters(parameters) {}

    /// Evaluates the function of its variable; as `evaluate` in all else.
    virtual bool evaluateVariable(Windows in, std::span<DoubleVector> out) = 0;

    /// Null when there are none.
    const ParameterTable* getParameterTable() const { return m_pParameters; }

private:
    const char* m_szName;
    const char* m_szVariable;
    const ParameterTable* m_pParameters;
};

/// A feature that is itself a function: formulas evaluate it through `SignalFeature::computeWindows`. It has a memory
/// when it is also `Resettable`.
class MURVANE_API SignalFeatureFunctionAdaptorImpl : public virtual SignalFeature, public SingleVariableFunctionImpl {
public:
    bool hasMemory() const override;
    bool resetMemory() override;

protected:
    using SingleVariableFunctionImpl::SingleVariableFunctionImpl;

    bool evaluateVariable(Windows in, std::span<DoubleVector> out) override;
};

}  // namespace Zantrix::Math::Xpr
