#include <murvane/mathxpr/FunctionBaseImpl.h>

#include <algorithm>
#include <ostream>

namespace Zantrix::Math::Xpr {

const FunctionParameter* FunctionBaseImpl::findParameter(const std::string& name) const {
    const auto found = std::find_if(m_vParameters.begin(), m_vParameters.end(),
                                    [&](const FunctionParameter& parameter) { return parameter.name == name; });
    return found == m_vParameters.end() ? nullptr : &*found;
}

std::ostream& FunctionBaseImpl::write(std::ostream& os) const {
    os << m_strName << '(';
    const char* separator = "";
    for (const std::string& name : m_vArgumentNames) {
        os << separator << name;
        separator = ", ";
    }
    for (const FunctionParameter& parameter : m_vParameters) {
        os << separator << parameter.name << "=...";
        separator = ", ";
    }
    return os << ')';
}

std::ostream& FunctionBaseImpl::dump(std::ostream& os) const {
    os << "function " << m_strName << '\n';
    for (const std::string& name : m_vArgumentNames) {
        os << "argument " << name << '\n';
    }
    for (const FunctionParameter& parameter : m_vParameters) {
        os << "parameter " << parameter.name << ": " << describe(parameter.kind)
           << (parameter.required ? "" : ", may be left out") << '\n';
    }
    return os << "memory: " << (hasMemory() ? "yes" : "no") << '\n';
}

}  // namespace Zantrix::Math::Xpr
