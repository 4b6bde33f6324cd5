#include <murvane/math/BasicFeatures.h>

namespace Zantrix::Math {

bool AmplitudeFeature::compute(const DoubleVector& in, DoubleVector& out) {
    if (&in == &out) {
        const DoubleVector copy(in);
        return AmplitudeFeature::compute(copy, out);
    }
    out.append(in);
    return true;
}

Cloneable* AmplitudeFeature::clone() const {
    return new AmplitudeFeature(*this);
}

bool MeanFeature::compute(const DoubleVector& in, DoubleVector& out) {
    out.push_back(in.average());
    return true;
}

Cloneable* MeanFeature::clone() const {
    return new MeanFeature(*this);
}

bool TemporalMeanFeature::compute(const DoubleVector& in, DoubleVector& out) {
    if (m_uiCount == 0) {
        m_vSum.assign(in.size(), 0.0);
    }
    if (in.size() != m_vSum.size()) {
        return false;
    }
    ++m_uiCount;
    const std::size_t start = out.size();
    out.resize(start + m_vSum.size());
    // Not in.size(): the input has grown when it is the output as well.
    for (std::size_t i = 0; i < m_vSum.size(); ++i) {
        m_vSum[i] += in[i];
        out[start + i] = m_vSum[i] / static_cast<double>(m_uiCount);
    }
    return true;
}

bool TemporalMeanFeature::reset() {
    m_uiCount = 0;
    return true;
}

Cloneable* TemporalMeanFeature::clone() const {
    return new TemporalMeanFeature(*this);
}

SlidingWindowFeature::SlidingWindowFeature(std::size_t length) : m_uiLength(length) {}

bool SlidingWindowFeature::compute(const DoubleVector& in, DoubleVector& out) {
    const std::size_t kept = in.size() < m_uiLength ? in.size() : m_uiLength;
    const std::size_t size = m_vValues.size() + kept;
    if (size > m_uiLength) {
        m_vValues.erase(m_vValues.begin(), m_vValues.begin() + static_cast<std::ptrdiff_t>(size - m_uiLength));
    }
    m_vValues.append(in.end() - static_cast<std::ptrdiff_t>(kept), in.end());
    out.append(m_vValues);
    return true;
}

bool SlidingWindowFeature::reset() {
    m_vValues.clear();
    return true;
}

Cloneable* SlidingWindowFeature::clone() const {
    return new SlidingWindowFeature(*this);
}

}  // namespace Zantrix::Math
