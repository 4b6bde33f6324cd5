#include <murvane/core/BoostRegex.h>

#include <boost/regex.hpp>

#include <utility>

namespace Zantrix {

static_assert(BoostRegex::c_uiIgnoreCase == boost::regex::icase);

struct BoostRegex::Impl {
    boost::regex regex;
};

BoostRegex::BoostRegex(const char* expression, unsigned flags) : m_pImpl(new Impl{boost::regex(expression, flags)}) {}

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
