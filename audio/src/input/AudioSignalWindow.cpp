#include <murvane/audio/input/AudioSignalWindow.h>
#include <murvane/core/Assertion.h>

#include <cmath>
#include <numbers>

namespace Zantrix::Audio {

namespace {

// Lines given as numbers are those by which log filters know the record; they never change (see Logging.h).
constexpr const char* c_szSource = "AudioSignalWindow";

}  // namespace

SignalWindowImpl::SignalWindowImpl(std::size_t uiWindowSize)
    : m_uiWindowSize(uiWindowSize), m_vWeights(uiWindowSize, 1.0) {}

double SignalWindowImpl::getWeight(std::size_t in_uiSampleIndex) const {
    const bool inRange = in_uiSampleIndex < m_uiWindowSize;
    Assertion(inRange, "in_uiSampleIndex < m_uiWindowSize", c_szSource, 75);
    return inRange ? m_vWeights[in_uiSampleIndex] : 1.0;
}

HannWindow::HannWindow(std::size_t uiWindowSize) : SignalWindowImpl(uiWindowSize) {
    for (std::size_t i = 0; i < uiWindowSize; ++i) {
        const double phase = static_cast<double>(i) * (2.0 * std::numbers::pi) / static_cast<double>(uiWindowSize - 1);
        m_vWeights[i] = (1.0 - std::cos(phase)) * 0.5;
    }
}

Cloneable* HannWindow::clone() const {
    return new HannWindow(*this);
}

}  // namespace Zantrix::Audio
