#include "FormulaLexer.h"

#include <murvane/core/Logging.h>
#include <murvane/core/Text.h>
#include <murvane/mathxpr/Registry.h>

#include <algorithm>

namespace Zantrix::Math::Xpr {

Registry& Registry::getInstance() {
    static Registry registry;
    return registry;
}

bool Registry::registerFunction(const char* name, ExpressionAllocator* pAllocator) {
    static const Logger& logger = Logger::forCategory("murvane.mathxpr.Registry");
    std::unique_ptr<ExpressionAllocator> pOwned(pAllocator);
    const auto refuse = [&](const char* reason) {
        logger.log(LogLevel::Error, "Registry", __LINE__, "Cannot register function \"", Text::orEmpty(name),
                   "\": ", reason);
        return false;
    };
    if (name == nullptr || !isIdentifier(name)) {
        return refuse("not a name that formulas can write");
    }
    if (pAllocator == nullptr) {
        return refuse("no allocator");
    }
    if (find(name) != nullptr) {
        return refuse("the name is taken");
    }
    m_vEntries.push_back({name, std::move(pOwned)});
    return true;
}

const Registry::ExpressionAllocator* Registry::find(std::string_view name) const {
    const auto found =
        std::find_if(m_vEntries.begin(), m_vEntries.end(), [&](const Entry& entry) { return entry.name == name; });
    return found == m_vEntries.end() ? nullptr : found->pAllocator.get();
}

std::unique_ptr<FunctionBaseImpl> Registry::newFunction(std::string_view name) const {
    const ExpressionAllocator* pAllocator = find(name);
    return std::unique_ptr<FunctionBaseImpl>(pAllocator == nullptr ? nullptr : pAllocator->newExpression());
}

StringVector Registry::getFunctionNames() const {
    StringVector names;
    for (const Entry& entry : m_vEntries) {
        names.push_back(entry.name);
    }
    return names;
}

}  // namespace Zantrix::Math::Xpr
