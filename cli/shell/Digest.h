#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace Zantrix::Cli {

/// A number that tells whether two texts are the same, unless somebody wants to deceive: the value of the polynomial
/// whose coefficients are the bytes of the text, seven by seven, at a fixed place, modulo the prime 2^61 - 1.
class Digest {
public:
    void add(std::string_view bytes);

    /// For all that was added so far; below 2^61.
    std::uint64_t value() const;

    /// Sixteen hexadecimal digits of it.
    std::string hex() const { return hexOf(value()); }

    /// Those of a value that was kept.
    static std::string hexOf(std::uint64_t value);

private:
    void addSlowly(std::string_view bytes);
    void addWord(std::uint64_t word);

    std::uint64_t m_uiValue = 0;
    std::uint64_t m_uiLength = 0;
    std::uint64_t m_uiPending = 0;  // fewer than seven bytes
    unsigned m_uiPendingBytes = 0;
};

}  // namespace Zantrix::Cli
