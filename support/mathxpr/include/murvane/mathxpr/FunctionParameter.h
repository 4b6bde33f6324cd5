#pragma once

#include <murvane/infra/ParameterTrie.h>

#include <string>
#include <variant>
#include <vector>

/// The parameters of functions: what formulas write as `name=value` after the arguments of a call.
namespace Zantrix::Math::Xpr {

/// What a parameter takes.
enum class ParameterKind {
    WholeNumber,  ///< 0 to 2147483647, what configurations hold as an integer
    Number,       ///< any finite number
    Text          ///< a text in double quotes
};

/// One parameter that a function declares.
struct FunctionParameter {
    std::string name;
    ParameterKind kind = ParameterKind::Number;
    bool required = true;  ///< whether a call without it is refused

    bool operator==(const FunctionParameter&) const = default;
};

/// The parameters of a function whose feature reads them from a configuration.
struct ParameterTable {
    std::string prefix;  ///< what the feature's keys begin with, such as "spectralrange"
    std::vector<FunctionParameter> parameters;
};

/// A parameter as a call gives it.
struct ParameterValue {
    std::string name;
    std::variant<double, std::string> value;

    bool operator==(const ParameterValue&) const = default;
};

using ParameterValues = std::vector<ParameterValue>;

/// Whether a value is one that the kind takes.
MURVANE_API bool accepts(ParameterKind kind, const ParameterValue& value);

/// The kind for messages, such as "a whole number from 0 to 2147483647".
MURVANE_API const char* describe(ParameterKind kind);

/// The values as a configuration under the keys `prefix` + "." + name. Numbers that an integer parameter can hold are
/// written as such, because features that read integers refuse every other form.
MURVANE_API ParameterTrie makeConfiguration(const std::string& prefix, const ParameterValues& values);

}  // namespace Zantrix::Math::Xpr
