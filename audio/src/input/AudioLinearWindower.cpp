#include <murvane/audio/input/AudioLinearWindower.h>
#include <murvane/core/Assertion.h>
#include <murvane/math/MathSignalFeatureFactory.h>

#include <boost/archive/polymorphic_iarchive.hpp>
#include <boost/archive/polymorphic_oarchive.hpp>
#include <boost/serialization/nvp.hpp>

#include <algorithm>

BOOST_CLASS_EXPORT_IMPLEMENT(Zantrix::Audio::LinearAudioWindower::Config)

namespace Zantrix::Audio {

namespace {

// Lines given as numbers are those by which log filters know the record; they never change (see Logging.h).
constexpr const char* c_szSource = "AudioLinearWindower";

const Logger& logger() {
    static const Logger& logger = Logger::forCategory("murvane.audio.LinearAudioWindower");
    return logger;
}

std::uint64_t samplesIn(std::uint64_t milliseconds, std::uint64_t sampleRate) {
    return milliseconds * sampleRate / 1000;
}

}  // namespace

std::uint64_t LinearAudioWindower::Config::getWindowSizeInSamples() const {
    return std::max<std::uint64_t>(samplesIn(m_uiWindowSizeMs, m_uiSampleRate), 1);
}

std::uint64_t LinearAudioWindower::Config::getWindowOverlapInSamples() const {
    return samplesIn(m_uiWindowOverlapMs, m_uiSampleRate);
}

template <class Archive>
void LinearAudioWindower::Config::serialize(Archive& archive, unsigned int) {
    archive& BOOST_SERIALIZATION_NVP(m_uiSampleRate);
    archive& BOOST_SERIALIZATION_NVP(m_uiWindowSizeMs);
    archive& BOOST_SERIALIZATION_NVP(m_uiWindowOverlapMs);
    archive& BOOST_SERIALIZATION_NVP(m_bSuppressDCOffset);
}

template void LinearAudioWindower::Config::serialize(boost::archive::polymorphic_iarchive&, unsigned int);
template void LinearAudioWindower::Config::serialize(boost::archive::polymorphic_oarchive&, unsigned int);

LinearAudioWindower::LinearAudioWindower() : ObjectWithLogger(logger()) {
    createEstimator();
    LinearAudioWindower::reset();
}

// The virtual bases carry no state.
LinearAudioWindower::LinearAudioWindower(const LinearAudioWindower& other)
    : Object(),
      LinearAudioSink(),
      TimeSource(),
      Resettable(),
      ObjectWithLogger(other),
      m_config(other.m_config),
      m_uiWindowSizeInSamples(other.m_uiWindowSizeInSamples),
      m_uiWindowOverlapInSamples(other.m_uiWindowOverlapInSamples),
      m_dWindowShiftSec(other.m_dWindowShiftSec),
      m_vScratch(other.m_vScratch) {
    createEstimator();
    LinearAudioWindower::reset();
}

LinearAudioWindower& LinearAudioWindower::operator=(const LinearAudioWindower& other) = default;

LinearAudioWindower::~LinearAudioWindower() = default;

void LinearAudioWindower::createEstimator() {
    Math::MathSignalFeatureFactory factory;
    Math::SignalFeature* pFeature = factory.getNewFeature("TemporalMean_Mean_Amplitude");
    auto* pEstimator = dynamic_cast<Math::SignalFeatureWithMemory*>(pFeature);
    if (pEstimator == nullptr) {
        delete pFeature;
    }
    m_pFeatureDCOffset = RefCountedObjPtr<Math::SignalFeatureWithMemory>(pEstimator);
}

bool LinearAudioWindower::configure(const Config& config) {
    refreshLogLevel();
    const TraceScope scope(*this, "LinearAudioWindower::configure", c_szSource, __LINE__);

    m_config = config;
    m_uiWindowSizeInSamples = m_config.getWindowSizeInSamples();
    m_uiWindowOverlapInSamples = m_config.getWindowOverlapInSamples();
    if (m_uiWindowOverlapInSamples >= m_uiWindowSizeInSamples) {
        return false;
    }
    m_dWindowShiftSec =
        (static_cast<double>(m_config.m_uiWindowSizeMs) - static_cast<double>(m_config.m_uiWindowOverlapMs)) / 1000.0;
    return true;
}

bool LinearAudioWindower::pushLinearAudio(const double* begin, const double* end) {
    refreshLogLevel();
    const TraceScope scope(*this, "LinearAudioWindower::pushLinearAudio", c_szSource, __LINE__);

    m_pendingSamples.push(begin, end);
    m_uiTotalPushedSamples += static_cast<std::uint64_t>(end - begin);
    return true;
}

bool LinearAudioWindower::popWindow(Math::DoubleVector& window) {
    refreshLogLevel();
    const TraceScope scope(*this, "LinearAudioWindower::popWindow", c_szSource, __LINE__);

    window.clear();
    // A window of 0 samples is that of a windower never configured; an overlap beyond the window, a refused
    // configuration whose hop would go backwards.
    if (m_uiWindowSizeInSamples == 0 || m_uiWindowOverlapInSamples > m_uiWindowSizeInSamples ||
        m_pendingSamples.size() < m_uiWindowSizeInSamples) {
        return false;
    }
    window.append(m_pendingSamples.data(), m_pendingSamples.data() + m_uiWindowSizeInSamples);
    if (m_config.m_bSuppressDCOffset && !suppressDCOffset(window)) {
        return false;
    }
    m_pendingSamples.consume(m_uiWindowSizeInSamples - m_uiWindowOverlapInSamples);
    m_dCurrentAudioTime += m_bFirstWindow ? static_cast<double>(m_config.m_uiWindowSizeMs) / 1000.0 : m_dWindowShiftSec;
    m_bFirstWindow = false;
    return true;
}

bool LinearAudioWindower::suppressDCOffset(Math::DoubleVector& window) {
    if (!Assertion(!m_pFeatureDCOffset.isNull(), "!m_pFeatureDCOffset.isNull()", c_szSource, 189)) {
        return false;
    }
    m_vScratch.clear();
    if (!m_pFeatureDCOffset->compute(window, m_vScratch) ||
        !Assertion(m_vScratch.size() == 1, "m_vScratch.size() == 1", c_szSource, 195)) {
        return false;
    }
    const double offset = m_vScratch[0];
    for (double& sample : window) {
        sample -= offset;
    }
    return true;
}

bool LinearAudioWindower::setCurrentAudioTime(double seconds) {
    m_dCurrentAudioTime = seconds;
    return true;
}

double LinearAudioWindower::getTotalPushedAudioTime() const {
    refreshLogLevel();
    const TraceScope scope(*this, "LinearAudioWindower::getTotalPushedAudioTime", c_szSource, __LINE__);

    return static_cast<double>(m_uiTotalPushedSamples) / static_cast<double>(m_config.m_uiSampleRate);
}

bool LinearAudioWindower::reset() {
    m_pendingSamples.clear();
    m_bFirstWindow = true;
    m_dCurrentAudioTime = 0.0;
    m_uiTotalPushedSamples = 0;
    if (!Assertion(!m_pFeatureDCOffset.isNull(), "!m_pFeatureDCOffset.isNull()", c_szSource, 149)) {
        return false;
    }
    return m_pFeatureDCOffset->reset();
}

}  // namespace Zantrix::Audio
