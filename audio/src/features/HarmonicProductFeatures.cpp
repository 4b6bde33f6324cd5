#include "FeatureDiagnostics.h"
#include "HarmonicProductArithmetic.h"

#include <murvane/audio/features/HarmonicProductFeatures.h>

namespace Zantrix::Audio {

const char* HarmonicProductFeature::getName() {
    return getFeatureTypeString(HARMONICPRODUCT);
}

const char* HarmonicProductFeature::sGetXprName() {
    return "harmonicProduct";
}

bool HarmonicProductFeature::compute(const Math::DoubleVector& in, Math::DoubleVector& out) {
    m_vScratch.resize(candidateCount(in.size()));
    productOfHarmonics<double>(in, m_vScratch, HarmonicBin());
    out.append(m_vScratch);
    return true;
}

Cloneable* HarmonicProductFeature::clone() const {
    return new HarmonicProductFeature(*this);
}

const char* RobustHarmonicProductFeature::getName() {
    return getFeatureTypeString(ROBUSTHARMONICPRODUCT);
}

bool RobustHarmonicProductFeature::compute(const Math::DoubleVector& in, Math::DoubleVector& out) {
    m_vScratch.resize(candidateCount(in.size()));
    productOfHarmonics<double>(in, m_vScratch, ShiftedHarmonicBin());
    out.append(m_vScratch);
    return true;
}

Cloneable* RobustHarmonicProductFeature::clone() const {
    return new RobustHarmonicProductFeature(*this);
}

const char* OldHarmonicProductFeature::getName() {
    return getFeatureTypeString(OLDHARMONICPRODUCT);
}

bool OldHarmonicProductFeature::compute(const Math::DoubleVector& in, Math::DoubleVector& out) {
    m_vScratch.resize(in.size());
    oldHarmonicProduct<double>(in, m_vScratch);
    out.append(m_vScratch);
    return true;
}

Cloneable* OldHarmonicProductFeature::clone() const {
    return new OldHarmonicProductFeature(*this);
}

const char* AntiHarmonicProductFeature::getName() {
    return getFeatureTypeString(ANTIHARMONICPRODUCT);
}

bool AntiHarmonicProductFeature::compute(const Math::DoubleVector& in, Math::DoubleVector& out) {
    m_vScratch.assign(candidateCount(in.size()), 1.0);
    if (!featureAssertion(m_vScratch.size() > 2, "m_vScratch.size() > 2", __LINE__)) {
        return false;
    }
    // Silence is neither harmonic nor the contrary: it keeps the neutral 1.0 instead of the product's 0.0.
    if (*in.max_element() != 0.0) {
        antiHarmonicProduct<double>(in, m_vScratch);
    }
    out.append(m_vScratch.begin() + 2, m_vScratch.end());
    return true;
}

Cloneable* AntiHarmonicProductFeature::clone() const {
    return new AntiHarmonicProductFeature(*this);
}

}  // namespace Zantrix::Audio
