#pragma once

#include <murvane/core/MemAccount.h>
#include <murvane/core/StringVector.h>
#include <murvane/math/SignalFeature.h>

#include <string>

/// Features as functions of expressions.
///
///     Object
///     └── FunctionAdaptor                  name, arguments, parameters
///         └── SingleVariableFunctionImpl   one variable
///             └── SignalFeatureFunctionAdaptorImpl, also a SignalFeature
namespace Zantrix::Math::Xpr {

/// What an expression function embeds: something that can be evaluated, and how formulas write it.
class MURVANE_API FunctionAdaptor : public virtual Object {
public:
    MURVANE_MEM_ACCOUNT("FunctionAdaptor")

    /// The name that formulas call it by, such as "harmonicProduct".
    virtual const char* getFunctionName() const = 0;

    /// The names of its arguments, in order.
    virtual StringVector getArgumentNames() const = 0;

    /// The names of its parameters, in order; empty for most.
    virtual StringVector getParameterNames() const = 0;
};

/// A function of one variable, without parameters.
class MURVANE_API SingleVariableFunctionImpl : public virtual FunctionAdaptor {
public:
    const char* getFunctionName() const override;
    StringVector getArgumentNames() const override;
    StringVector getParameterNames() const override;

protected:
    /// @param name,variable  literals (kept by pointer)
    SingleVariableFunctionImpl(const char* name, const char* variable) : m_szName(name), m_szVariable(variable) {}

private:
    const char* m_szName;
    const char* m_szVariable;
};

/// A feature that is itself a function: formulas evaluate it through `SignalFeature::compute`.
class MURVANE_API SignalFeatureFunctionAdaptorImpl : public virtual SignalFeature, public SingleVariableFunctionImpl {
protected:
    using SingleVariableFunctionImpl::SingleVariableFunctionImpl;
};

}  // namespace Zantrix::Math::Xpr
