#include "EnergyArithmetic.h"
#include "FeatureDiagnostics.h"

#include <murvane/audio/features/EnergyFeatures.h>

#include <exception>

namespace Zantrix::Audio {

EnergyHistogramFeature::EnergyHistogramFeature(double energyMax, unsigned long long nbOfBins)
    : m_dEnergyMaxValue(energyMax), m_uiNbOfBins(nbOfBins) {}

const char* EnergyHistogramFeature::getName() {
    return getFeatureTypeString(ENERGYHISTOGRAM);
}

bool EnergyHistogramFeature::compute(const Math::DoubleVector& in, Math::DoubleVector& out) {
    if (!featureAssertion(m_uiNbOfBins > 0, "m_uiNbOfBins > 0", __LINE__) ||
        !featureAssertion(m_dEnergyMaxValue > 0, "m_dEnergyMaxValue > 0", __LINE__)) {
        return false;
    }
    try {
        m_vBins.resize(m_uiNbOfBins);
        energyHistogram(in, m_dEnergyMaxValue, m_vBins);
        out.append(m_vBins.begin(), m_vBins.end());
    } catch (const std::exception& exception) {
        // More bins than there is memory for.
        featureLogger().log(LogLevel::Error, c_szFeatureSource, __LINE__, "Could not make a histogram of ",
                            m_uiNbOfBins, " bins: ", exception.what());
        return false;
    }
    return true;
}

Cloneable* EnergyHistogramFeature::clone() const {
    return new EnergyHistogramFeature(*this);
}

MeanEnergyAboveThreshFeature::MeanEnergyAboveThreshFeature(double threshold) : m_dThreshold(threshold) {}

bool MeanEnergyAboveThreshFeature::compute(const Math::DoubleVector& in, Math::DoubleVector& out) {
    addEnergiesAbove(in, m_dThreshold, m_accepted);
    out.push_back(meanOf(m_accepted));
    return true;
}

bool MeanEnergyAboveThreshFeature::reset() {
    m_accepted = {};
    return true;
}

Cloneable* MeanEnergyAboveThreshFeature::clone() const {
    return new MeanEnergyAboveThreshFeature(*this);
}

MeanMaxFeature::MeanMaxFeature(unsigned long long n, double floor)
    : m_dStep(1.0 / static_cast<double>(n)), m_dFloor(std::fabs(floor)) {}

bool MeanMaxFeature::compute(const Math::DoubleVector& in, Math::DoubleVector& out) {
    addSegments(in, m_dStep, m_dFloor, m_maxima);
    const bool closed = m_maxima.uiCount > 0;
    out.push_back(closed ? meanOf(m_maxima) : m_maxima.dCurrentMaximum);
    out.push_back(closed ? m_maxima.dMinimum : m_maxima.dCurrentMaximum);
    return true;
}

bool MeanMaxFeature::reset() {
    m_maxima = {};
    return true;
}

Cloneable* MeanMaxFeature::clone() const {
    return new MeanMaxFeature(*this);
}

}  // namespace Zantrix::Audio
