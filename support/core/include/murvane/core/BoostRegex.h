#pragma once

#include <murvane/core/Export.h>

#include <string>

namespace Zantrix {

/// A regular expression in Perl syntax that matches whole strings, by default without regard to case. Letters are those
/// of the "C" locale, whatever the program's.
class MURVANE_API BoostRegex {
public:
    /// Boost.Regex's `icase`: Perl syntax, letters compared without regard to case.
    static constexpr unsigned c_uiIgnoreCase = 0x100000;

    /// Compiles the expression.
    ///
    /// @param expression  not null
    /// @param flags       those of Boost.Regex; 0 for Perl syntax with regard to case
    /// @throws std::runtime_error when the expression is invalid (its text says why and where)
    explicit BoostRegex(const char* expression, unsigned flags = c_uiIgnoreCase);
    ~BoostRegex();
    BoostRegex(const BoostRegex& other);
    BoostRegex& operator=(const BoostRegex& other);

    /// Whether the expression matches the whole text, not only a part of it.
    ///
    /// @throws std::runtime_error when matching would take unreasonably long
    bool matches(const std::string& text) const;

private:
    struct Impl;
    Impl* m_pImpl;
};

}  // namespace Zantrix
