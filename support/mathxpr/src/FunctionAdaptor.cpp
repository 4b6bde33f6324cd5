#include <murvane/mathxpr/FunctionAdaptor.h>

namespace Zantrix::Math::Xpr {

const char* SingleVariableFunctionImpl::getFunctionName() const {
    return m_szName;
}

StringVector SingleVariableFunctionImpl::getArgumentNames() const {
    return {m_szVariable};
}

std::vector<FunctionParameter> SingleVariableFunctionImpl::getParameters() const {
    return m_pParameters == nullptr ? std::vector<FunctionParameter>() : m_pParameters->parameters;
}

bool SingleVariableFunctionImpl::setParameters(const ParameterValues& values) {
    return values.empty();
}

bool SingleVariableFunctionImpl::evaluate(std::span<const Windows> arguments, std::span<DoubleVector> out) {
    return arguments.size() == 1 && arguments.front().size() == out.size() && evaluateVariable(arguments.front(), out);
}

bool SignalFeatureFunctionAdaptorImpl::hasMemory() const {
    return dynamic_cast<const Resettable*>(this) != nullptr;
}

bool SignalFeatureFunctionAdaptorImpl::resetMemory() {
    auto* pResettable = dynamic_cast<Resettable*>(this);
    return pResettable == nullptr || pResettable->reset();
}

bool SignalFeatureFunctionAdaptorImpl::evaluateVariable(Windows in, std::span<DoubleVector> out) {
    return computeWindows(in, out);
}

}  // namespace Zantrix::Math::Xpr
