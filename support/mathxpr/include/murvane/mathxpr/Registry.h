#pragma once

#include <murvane/core/StringVector.h>
#include <murvane/mathxpr/FunctionBaseImpl.h>

#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace Zantrix::Math::Xpr {

/// The functions that formulas may call, by name.
///
/// Functions are registered by static initialisers, in any order; nothing is ever taken out. It is not locked: register
/// everything before a second thread uses it. Lookups alone may run side by side.
class MURVANE_API Registry {
public:
    /// Makes the functions of one name.
    class MURVANE_API ExpressionAllocator {
    public:
        virtual ~ExpressionAllocator() = default;

        /// A new function; the caller owns it.
        virtual FunctionBaseImpl* newExpression() const = 0;
    };

    /// Makes a default-constructed `F`, typically a `UserFunctionImpl`.
    template <typename F>
    class MURVANE_API ExpressionAllocatorT : public ExpressionAllocator {
    public:
        FunctionBaseImpl* newExpression() const override { return new F; }
    };

    /// The one registry of the process, made on first use.
    static Registry& getInstance();

    Registry(const Registry&) = delete;
    Registry& operator=(const Registry&) = delete;

    /// Registers a function.
    ///
    /// @param name        what formulas write: a letter or "_", then letters, digits and "_"
    /// @param pAllocator  owned by the registry from this call on; when the result is false it has been deleted
    /// @return false, after an ERROR record, when the name is null, taken or not one that a formula could write, or
    ///         the allocator is null
    bool registerFunction(const char* name, ExpressionAllocator* pAllocator);

    /// The allocator of that name, owned by the registry; null when there is none.
    const ExpressionAllocator* find(std::string_view name) const;

    /// A new function of that name; null when there is none.
    std::unique_ptr<FunctionBaseImpl> newFunction(std::string_view name) const;

    /// The names in the order of registration.
    StringVector getFunctionNames() const;

private:
    struct Entry {
        std::string name;
        std::unique_ptr<ExpressionAllocator> pAllocator;
    };

    Registry() = default;
    ~Registry() = default;

    std::vector<Entry> m_vEntries;
};

}  // namespace Zantrix::Math::Xpr
