#include "FeatureDiagnostics.h"
#include "PeakArithmetic.h"

#include <murvane/audio/features/PeakFeatures.h>

namespace Zantrix::Audio {

const char* PeaksFeature::getName() {
    return getFeatureTypeString(PEAKS);
}

const char* PeaksFeature::sGetXprName() {
    return "peaks";
}

bool PeaksFeature::compute(const Math::DoubleVector& in, Math::DoubleVector& out) {
    return compute_i(3, true, in, out);
}

bool PeaksFeature::compute_i(std::size_t nbPeaks, bool useLog, const Math::DoubleVector& in, Math::DoubleVector& out) {
    if (in.empty()) {
        return false;
    }
    m_vWork = in;
    m_vWork.absoluteValue();
    m_vPeakValues.resize(nbPeaks);
    m_vPeakPositions.resize(nbPeaks);
    findPeaks(m_vWork, m_vPeakValues, m_vPeakPositions);
    out.append(m_vPeakValues);
    for (const std::size_t position : m_vPeakPositions) {
        out.push_back(useLog ? logOfPosition(position) : static_cast<double>(position));
    }
    return true;
}

Cloneable* PeaksFeature::clone() const {
    return new PeaksFeature(*this);
}

const char* PonderatedPeaksFeature::sGetXprName() {
    return "ponderatedPeaks";
}

bool PonderatedPeaksFeature::compute(const Math::DoubleVector& in, Math::DoubleVector& out) {
    const double mean = in.average();
    if (!compute_i(3, true, in, out)) {
        return false;
    }
    // Drops the positions by size alone: whoever evaluates this feature hands in an empty vector, and what another one
    // held has always been cut off and scaled along.
    out.resize(3);
    if (mean == 0.0) {
        out *= mean;
    } else {
        out /= mean;
    }
    return true;
}

Cloneable* PonderatedPeaksFeature::clone() const {
    return new PonderatedPeaksFeature(*this);
}

const char* NonLogPeaksFeature::getName() {
    return getFeatureTypeString(NONLOGPEAKS);
}

const char* NonLogPeaksFeature::sGetXprName() {
    return "nonLogPeaks";
}

bool NonLogPeaksFeature::compute(const Math::DoubleVector& in, Math::DoubleVector& out) {
    m_vTemp.clear();
    if (!m_peaks.compute_i(c_uiNB_OF_MAX, false, in, m_vTemp)) {
        return false;
    }
    featureAssertion(m_vTemp.size() == 2 * c_uiNB_OF_MAX, "vTemp.size() == (2*c_uiNB_OF_MAX)", __LINE__);
    out.append(m_vTemp.end() - c_uiNB_OF_MAX, m_vTemp.end());
    return true;
}

Cloneable* NonLogPeaksFeature::clone() const {
    return new NonLogPeaksFeature(*this);
}

}  // namespace Zantrix::Audio
