#pragma once

#include <murvane/core/Object.h>
#include <murvane/mathxpr/FunctionAdaptor.h>

#include <iosfwd>
#include <span>
#include <string>
#include <vector>

/// The objects that formulas are evaluated with.
///
///     Cloneable, Resettable, OutputStreamable
///     └── ExpressionBaseImpl       evaluate(), hasMemory(), dump()
///         └── FunctionBaseImpl     name, arguments, parameters
///             └── UserFunctionImpl<T>  (UserFunctionImpl.h)
namespace Zantrix::Math::Xpr {

/// Something that turns argument vectors into one vector. Used by one thread at a time.
class MURVANE_API ExpressionBaseImpl : public virtual Cloneable,
                                       public virtual Resettable,
                                       public virtual OutputStreamable {
public:
    /// As `FunctionAdaptor::evaluate`.
    virtual bool evaluate(std::span<const Windows> arguments, std::span<DoubleVector> out) = 0;

    /// As `FunctionAdaptor::hasMemory`.
    virtual bool hasMemory() const = 0;

    /// Writes, for people who look for a mistake, what the object is made of; one item per line.
    virtual std::ostream& dump(std::ostream& os) const = 0;
};

/// A named function with arguments and parameters.
class MURVANE_API FunctionBaseImpl : public ExpressionBaseImpl {
public:
    const std::string& getName() const { return m_strName; }
    const StringVector& getArgumentNames() const { return m_vArgumentNames; }
    const std::vector<FunctionParameter>& getParameters() const { return m_vParameters; }

    /// The parameter of that name, or null.
    const FunctionParameter* findParameter(const std::string& name) const;

    /// Sets parameters; see `FunctionAdaptor::setParameters`.
    virtual bool configure(const ParameterValues& values) = 0;

    /// Writes the call as formulas do: "spectralRange(x, frequencyHz=..., widthHz=...)".
    std::ostream& write(std::ostream& os) const override;
    std::ostream& dump(std::ostream& os) const override;

protected:
    explicit FunctionBaseImpl(const char* name) : m_strName(name) {}

    void setName(const char* name) { m_strName = name; }
    void addArgument(const std::string& name) { m_vArgumentNames.push_back(name); }
    void addParameter(const FunctionParameter& parameter) { m_vParameters.push_back(parameter); }

private:
    std::string m_strName;
    StringVector m_vArgumentNames;
    std::vector<FunctionParameter> m_vParameters;
};

}  // namespace Zantrix::Math::Xpr
