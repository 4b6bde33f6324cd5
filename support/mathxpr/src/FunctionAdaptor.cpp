#include <murvane/mathxpr/FunctionAdaptor.h>

namespace Zantrix::Math::Xpr {

const char* SingleVariableFunctionImpl::getFunctionName() const {
    return m_szName;
}

StringVector SingleVariableFunctionImpl::getArgumentNames() const {
    return {m_szVariable};
}

StringVector SingleVariableFunctionImpl::getParameterNames() const {
    return {};
}

}  // namespace Zantrix::Math::Xpr
