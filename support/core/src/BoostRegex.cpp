#include <murvane/core/BoostRegex.h>

#include <boost/regex.hpp>

#include <locale>
#include <utility>

namespace Zantrix {

static_assert(BoostRegex::c_uiIgnoreCase == boost::regex::icase);

struct BoostRegex::Impl {
    boost::regex regex;
};

namespace {

// Of the program's locale nothing is taken: where "i" and "I" are two letters, names would not match any more.
boost::regex compiled(const char* expression, unsigned flags) {
    boost::regex regex;
    regex.imbue(std::locale::classic());
    regex.assign(expression, flags);
    return regex;
}

}  // namespace

BoostRegex::BoostRegex(const char* expression, unsigned flags) : m_pImpl(new Impl{compiled(expression, flags)}) {}

BoostRegex::~BoostRegex() {
    delete m_pImpl;
}

BoostRegex::BoostRegex(const BoostRegex& other) : m_pImpl(new Impl(*other.m_pImpl)) {}

BoostRegex& BoostRegex::operator=(const BoostRegex& other) {
    BoostRegex copy(other);
    std::swap(m_pImpl, copy.m_pImpl);
    return *this;
}

bool BoostRegex::matches(const std::string& text) const {
    return boost::regex_match(text, m_pImpl->regex);
}

}  // namespace Zantrix
