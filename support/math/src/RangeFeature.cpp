#include <murvane/core/Logging.h>
#include <murvane/math/RangeFeature.h>

namespace Zantrix::Math {

RangeFeature::RangeFeature(std::size_t startIndex, std::size_t length)
    : m_uiStartIndex(startIndex), m_uiLength(length) {}

bool RangeFeature::configure(const ROConfiguration& config) {
    unsigned int startIndex = 0;
    unsigned int length = 0;
    if (!extractConfigParam(config, "range.startIndex", startIndex) ||
        !extractConfigParam(config, "range.length", length)) {
        return false;
    }
    m_uiStartIndex = startIndex;
    m_uiLength = length;
    return true;
}

bool RangeFeature::compute(const DoubleVector& in, DoubleVector& out) {
    if (m_uiLength > in.size() || m_uiStartIndex > in.size() - m_uiLength) {
        return false;
    }
    if (&in == &out) {
        const DoubleVector copy(in);
        return RangeFeature::compute(copy, out);
    }
    const auto first = in.begin() + static_cast<std::ptrdiff_t>(m_uiStartIndex);
    out.append(first, first + static_cast<std::ptrdiff_t>(m_uiLength));
    return true;
}

Cloneable* RangeFeature::clone() const {
    return new RangeFeature(*this);
}

bool RangeFeature::extractConfigParam(const ROConfiguration& config, const std::string& key, unsigned int& value) {
    static const Logger& logger = Logger::forCategory("murvane.math.RangeFeature");
    int parameter = 0;
    if (!config.getIntParameter(key.c_str(), parameter)) {
        logger.log(LogLevel::Warn, "RangeFeature", __LINE__, "Could not find parameter ", key, " in configuration");
        return false;
    }
    if (parameter < 0) {
        logger.log(LogLevel::Warn, "RangeFeature", __LINE__, "Invalid value in parameter ", key);
        return false;
    }
    value = static_cast<unsigned int>(parameter);
    return true;
}

}  // namespace Zantrix::Math
