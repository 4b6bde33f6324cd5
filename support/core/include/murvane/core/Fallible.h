#pragma once

#include <utility>

namespace Zantrix {

/// A value or nothing: a validity flag and the value. The value of an invalid one is default-constructed and has
/// no meaning.
template <typename T>
class Fallible {
public:
    /// Nothing.
    Fallible() = default;
    // Implicit on purpose, so that a function can simply return its value.
    Fallible(T value) : m_bValid(true), m_value(std::move(value)) {}

    bool isValid() const { return m_bValid; }
    explicit operator bool() const { return m_bValid; }

    const T& getValue() const { return m_value; }
    const T& operator*() const { return m_value; }

private:
    bool m_bValid = false;
    T m_value{};
};

}  // namespace Zantrix
