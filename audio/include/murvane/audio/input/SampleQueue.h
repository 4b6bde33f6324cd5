#pragma once

#include <murvane/math/DoubleVector.h>

#include <cstddef>

namespace Zantrix::Audio {

/// Samples waiting to be consumed: appended at the back, taken from the front, contiguous in memory.
///
/// Consumed samples are given up lazily: the rest moves to the start of the storage once it is the smaller part.
/// Each sample thus moves at most about once, and the storage stops growing when the queue does.
class SampleQueue {
public:
    std::size_t size() const { return m_vSamples.size() - m_uiConsumed; }

    /// The oldest sample and those after it, `size()` in all.
    const double* data() const { return m_vSamples.data() + m_uiConsumed; }

    void push(const double* begin, const double* end) {
        if (m_uiConsumed > size()) {
            m_vSamples.erase(m_vSamples.begin(), m_vSamples.begin() + static_cast<std::ptrdiff_t>(m_uiConsumed));
            m_uiConsumed = 0;
        }
        m_vSamples.append(begin, end);
    }

    /// Gives up the oldest `count` samples, which must not be more than there are.
    void consume(std::size_t count) { m_uiConsumed += count; }

    void clear() {
        m_vSamples.clear();
        m_uiConsumed = 0;
    }

private:
    Math::DoubleVector m_vSamples;
    std::size_t m_uiConsumed = 0;  // samples at the start of m_vSamples that are gone
};

}  // namespace Zantrix::Audio
