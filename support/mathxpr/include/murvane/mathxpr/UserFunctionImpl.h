#pragma once

#include <murvane/core/MemAccount.h>
#include <murvane/mathxpr/FunctionBaseImpl.h>

namespace Zantrix::Math::Xpr {

/// The function over an adaptor: a `T`, embedded, that evaluates, and the base that knows its name, arguments and
/// parameters.
///
/// @tparam T  a `FunctionAdaptor` that can be default-constructed and copied
template <typename T>
class MURVANE_API UserFunctionImpl : public FunctionBaseImpl {
public:
    MURVANE_MEM_ACCOUNT("UserFunctionImpl")

    /// A fresh function, described by its fresh adaptor. The name given first, "unamed" as it has always been spelled,
    /// only lasts until the adaptor has been asked for its own.
    UserFunctionImpl() : FunctionBaseImpl("unamed") {
        setName(m_adaptor.getFunctionName());
        for (const std::string& name : m_adaptor.getArgumentNames()) {
            addArgument(name);
        }
        for (const FunctionParameter& parameter : m_adaptor.getParameters()) {
            addParameter(parameter);
        }
    }

    /// A copy of adaptor and description; the description is not asked for again.
    UserFunctionImpl(const UserFunctionImpl&) = default;
    UserFunctionImpl& operator=(const UserFunctionImpl&) = default;

    bool configure(const ParameterValues& values) override { return m_adaptor.setParameters(values); }
    bool reset() override { return m_adaptor.resetMemory(); }
    bool hasMemory() const override { return m_adaptor.hasMemory(); }

    bool evaluate(std::span<const Windows> arguments, std::span<DoubleVector> out) override {
        return m_adaptor.evaluate(arguments, out);
    }

    Cloneable* clone() const override { return new UserFunctionImpl(*this); }

    /// The adaptor, part of this object.
    const T& getAdaptor() const { return m_adaptor; }

private:
    T m_adaptor;
};

}  // namespace Zantrix::Math::Xpr
