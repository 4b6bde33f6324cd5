#include "FeatureDiagnostics.h"
#include "SpectralRangeArithmetic.h"

#include <murvane/audio/features/SpectralRangeFeatures.h>
#include <murvane/core/Text.h>

#include <algorithm>
#include <exception>
#include <limits>
#include <utility>

namespace Zantrix::Audio {

namespace {

// Indices saturate here, so that no sum of them wraps: the largest int names a bin that no spectrum has.
std::size_t saturated(std::uint64_t index) {
    return std::min<std::uint64_t>(index, std::numeric_limits<int>::max());
}

}  // namespace

SpectralRangeFeature::SpectralRangeFeature(unsigned long long centreHz, unsigned long long widthHz)
    : m_uiCenterFrequency(centreHz), m_uiFrequencyWidth(widthHz) {}

const char* SpectralRangeFeature::getName() {
    return getFeatureTypeString(SPECTRALRANGE);
}

const char* SpectralRangeFeature::sGetXprName() {
    return "spectralRange";
}

const char* SpectralRangeFeature::getCenterFrequencyName() {
    return "frequencyHz";
}

const char* SpectralRangeFeature::getFrequencyWidthName() {
    return "widthHz";
}

bool SpectralRangeFeature::configure(const ROConfiguration& config) {
    const TraceScope scope(featureLogger(), "SpectralRangeFeature::configure", c_szFeatureSource, __LINE__);

    unsigned int value = 0;
    if (!extractConfigParam(config, configKey(getName(), getCenterFrequencyName()), value)) {
        return true;
    }
    m_uiCenterFrequency = value;
    const std::string strWidthKey = configKey(getName(), getFrequencyWidthName());
    if (!extractConfigParam(config, strWidthKey, value)) {
        featureLogger().log(LogLevel::Error, c_szFeatureSource, __LINE__, "Parameter ", strWidthKey,
                            " is not set for spectral range feature");
        return true;
    }
    m_uiFrequencyWidth = value;
    featureLogger().log(LogLevel::Debug, c_szFeatureSource, __LINE__,
                        "SpectralRangeFeature center freq = ", m_uiCenterFrequency,
                        " Hz, width = ", m_uiFrequencyWidth);
    m_bRangeConfigured = false;
    return true;
}

bool SpectralRangeFeature::compute(const Math::DoubleVector& in, Math::DoubleVector& out) {
    if (!m_bRangeConfigured && !configureRange(in.size())) {
        return false;
    }
    const bool ok = Math::RangeFeature::compute(in, out);
    out.push_back(m_dRelativePosition);
    return ok;
}

bool SpectralRangeFeature::configureRange(std::size_t binCount) {
    featureLogger().log(LogLevel::Debug, c_szFeatureSource, __LINE__,
                        "SpectralRangeFeature center freq = ", m_uiCenterFrequency,
                        " Hz, width = ", m_uiFrequencyWidth);
    if (!featureAssertion(m_uiCenterFrequency > 0, "m_uiCenterFrequency > 0", __LINE__)) {
        return false;
    }
    const auto [uiCenterIndex, uiRangeWidth, dRelativePosition] =
        binsAround(m_uiCenterFrequency, m_uiFrequencyWidth, binCount);
    if (!featureAssertion(uiCenterIndex > uiRangeWidth, "uiCenterIndex>uiRangeWidth", __LINE__)) {
        return false;
    }
    Math::RangeFeature::operator=(
        Math::RangeFeature(saturated(uiCenterIndex - uiRangeWidth), saturated(2 * saturated(uiRangeWidth) + 1)));
    m_bRangeConfigured = true;
    m_dRelativePosition = dRelativePosition;
    featureLogger().log(LogLevel::Debug, c_szFeatureSource, __LINE__,
                        "SpectralRangeFeature new center index = ", uiCenterIndex, ",width index = ", uiRangeWidth,
                        ",  rel position in bin: ", m_dRelativePosition);
    return true;
}

Cloneable* SpectralRangeFeature::clone() const {
    return new SpectralRangeFeature(*this);
}

const char* MaxSpectralRangesFeature::getName() {
    return getFeatureTypeString(MAXSPECTRALRANGES);
}

const char* MaxSpectralRangesFeature::sGetXprName() {
    return "maxSpectralRanges";
}

const char* MaxSpectralRangesFeature::getFrequenciesListName() {
    return "frequenciesList";
}

void MaxSpectralRangesFeature::addSpectralRange(unsigned long long centreHz, unsigned long long widthHz) {
    CloneableObjPtr<SpectralRangeFeature> pRange(new SpectralRangeFeature(centreHz, widthHz));
    m_vSpectralRanges.push_back(std::move(pRange));
}

bool MaxSpectralRangesFeature::configure(const ROConfiguration& config) {
    const TraceScope scope(featureLogger(), "MaxSpectralRangesFeature::configure", c_szFeatureSource, __LINE__);

    const std::string strKey = configKey(getName(), getFrequenciesListName());
    std::string strList;
    try {
        if (!config.getStringParameter(strKey.c_str(), strList)) {
            featureLogger().log(LogLevel::Error, c_szFeatureSource, __LINE__, "Could not find parameter ", strKey,
                                " in provided config");
            return false;
        }
        return addListedRanges(strList);
    } catch (const std::exception& exception) {
        featureLogger().log(LogLevel::Error, c_szFeatureSource, __LINE__, "Unexpected std::exception ",
                            exception.what(), " caught in configure() with ", strKey, ": \"", strList, '"');
        return false;
    }
}

bool MaxSpectralRangesFeature::addListedRanges(const std::string& list) {
    std::istringstream atoms = Text::reader(list);
    for (std::string strAtom; atoms >> strAtom;) {
        std::uint32_t frequency = 0;
        if (!Text::parseWhole(strAtom, frequency)) {
            // No blank before "in": filters on this record match it as it is.
            featureLogger().log(LogLevel::Error, c_szFeatureSource, __LINE__, "Could not convert string atom ", strAtom,
                                "in an integer");
            return false;
        }
        addSpectralRange(frequency, c_uiListedWidthHz);
    }
    return true;
}

bool MaxSpectralRangesFeature::compute(const Math::DoubleVector& in, Math::DoubleVector& out) {
    if (!featureAssertion(!m_vSpectralRanges.empty(), "!m_vSpectralRanges.empty()", __LINE__)) {
        return false;
    }
    m_vBest.clear();
    double best = std::numeric_limits<double>::lowest();
    for (const CloneableObjPtr<SpectralRangeFeature>& pRange : m_vSpectralRanges) {
        m_vScratchComputation.clear();
        if (pRange.isNull() || !pRange->compute(in, m_vScratchComputation) ||
            !featureAssertion(!m_vScratchComputation.empty(), "!m_vScratchComputation.empty()", __LINE__)) {
            return false;
        }
        // The last value is the relative position, which takes no part in the contest.
        const auto strongest = std::max_element(m_vScratchComputation.begin(), m_vScratchComputation.end() - 1);
        if (strongest != m_vScratchComputation.end() - 1 && *strongest > best) {
            best = *strongest;
            m_vBest.swap(m_vScratchComputation);
        }
    }
    out.append(m_vBest);
    return true;
}

Cloneable* MaxSpectralRangesFeature::clone() const {
    return new MaxSpectralRangesFeature(*this);
}

}  // namespace Zantrix::Audio
