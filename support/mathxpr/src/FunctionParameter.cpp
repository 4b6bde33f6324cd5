#include <murvane/mathxpr/FunctionParameter.h>

#include <cmath>
#include <limits>

namespace Zantrix::Math::Xpr {

namespace {

bool fitsInt(double number) {
    return number >= std::numeric_limits<int>::min() && number <= std::numeric_limits<int>::max() &&
           number == std::trunc(number);
}

}  // namespace

bool accepts(ParameterKind kind, const ParameterValue& value) {
    const double* pNumber = std::get_if<double>(&value.value);
    switch (kind) {
        case ParameterKind::WholeNumber:
            return pNumber != nullptr && *pNumber >= 0.0 && fitsInt(*pNumber);
        case ParameterKind::Number:
            return pNumber != nullptr && std::isfinite(*pNumber);
        case ParameterKind::Text:
            return pNumber == nullptr;
    }
    return false;
}

const char* describe(ParameterKind kind) {
    switch (kind) {
        case ParameterKind::WholeNumber:
            return "a whole number from 0 to 2147483647";
        case ParameterKind::Number:
            return "a number";
        case ParameterKind::Text:
            return "a text in double quotes";
    }
    return "";
}

ParameterTrie makeConfiguration(const std::string& prefix, const ParameterValues& values) {
    ParameterTrie config;
    for (const ParameterValue& value : values) {
        const std::string key = prefix + "." + value.name;
        if (const double* pNumber = std::get_if<double>(&value.value)) {
            if (fitsInt(*pNumber)) {
                config.setIntParameter(key.c_str(), static_cast<int>(*pNumber));
            } else {
                config.setFloatParameter(key.c_str(), *pNumber);
            }
        } else {
            config.setStringParameter(key.c_str(), std::get<std::string>(value.value));
        }
    }
    return config;
}

}  // namespace Zantrix::Math::Xpr
