#pragma once

#include <algorithm>
#include <array>
#include <locale>
#include <string>

namespace testkit {

/// As long as it lives, the program's locale is one where a thousand is "1.000" and a half "0,5", where the capital of
/// "i" and the small letter of "I" are other characters, and where 0xA0 is a blank. What must not depend on the locale
/// is tried under it.
class ForeignLocale {
public:
    ForeignLocale()
        : m_previous(std::locale::global(std::locale(std::locale(std::locale::classic(), new Numbers),
                                                     static_cast<std::ctype<char>*>(new Letters)))) {}
    ~ForeignLocale() { std::locale::global(m_previous); }
    ForeignLocale(const ForeignLocale&) = delete;
    ForeignLocale& operator=(const ForeignLocale&) = delete;

private:
    class Numbers : public std::numpunct<char> {
        char do_thousands_sep() const override { return '.'; }
        char do_decimal_point() const override { return ','; }
        std::string do_grouping() const override { return "\3"; }
    };

    class Letters : public std::ctype<char> {
    public:
        Letters() : std::ctype<char>(table()) {}

    private:
        static const mask* table() {
            static const auto masks = [] {
                std::array<mask, table_size> result{};
                std::copy_n(classic_table(), table_size, result.begin());
                result[0xa0] |= space;
                return result;
            }();
            return masks.data();
        }

        char do_toupper(char c) const override { return c == 'i' ? '\xdd' : std::ctype<char>::do_toupper(c); }
        char do_tolower(char c) const override { return c == 'I' ? '\xfd' : std::ctype<char>::do_tolower(c); }
        const char* do_toupper(char* low, const char* high) const override {
            return std::transform(low, const_cast<char*>(high), low, [this](char c) { return do_toupper(c); });
        }
        const char* do_tolower(char* low, const char* high) const override {
            return std::transform(low, const_cast<char*>(high), low, [this](char c) { return do_tolower(c); });
        }
    };

    std::locale m_previous;
};

}  // namespace testkit
