#include "FeatureDiagnostics.h"
#include "NeighbourhoodArithmetic.h"

#include <murvane/audio/features/NeighbourhoodFeatures.h>
#include <murvane/math/BasicFeatures.h>
#include <murvane/math/SignalFeatureComposed.h>

#include <iterator>
#include <memory>

namespace Zantrix::Audio {

namespace {

constexpr std::size_t c_uiSlidingWindowLength = 5;

}  // namespace

const char* MaxNeighbourhoodFeature::getName() {
    return getFeatureTypeString(NEIGHBOURHOODOFMAX);
}

bool MaxNeighbourhoodFeature::compute(const Math::DoubleVector& in, Math::DoubleVector& out) {
    // Three values would make a neighbourhood, but have always been refused: no spectrum is that short.
    if (in.size() < 4) {
        return false;
    }
    const std::size_t start = startOfNeighbourhood(in);
    // Copied, since `out` may be the input.
    const double neighbourhood[] = {in[start], in[start + 1], in[start + 2]};
    out.append(std::begin(neighbourhood), std::end(neighbourhood));
    return true;
}

Cloneable* MaxNeighbourhoodFeature::clone() const {
    return new MaxNeighbourhoodFeature(*this);
}

DeltaToSlidingMeanFeature::DeltaToSlidingMeanFeature() {
    DeltaToSlidingMeanFeature::reset();
}

const char* DeltaToSlidingMeanFeature::getName() {
    return getFeatureTypeString(DELTATOSLIDINGMEAN);
}

bool DeltaToSlidingMeanFeature::compute(const Math::DoubleVector& in, Math::DoubleVector& out) {
    if (!featureAssertion(in.size() == 1, "in_vInput.size() == 1", __LINE__)) {
        return false;
    }
    m_vScratch.clear();
    if (!featureAssertion(!m_pSlidingMeanFeature.isNull(), "!m_pSlidingMeanFeature.isNull()", __LINE__) ||
        !featureAssertion(m_pSlidingMeanFeature->compute(in, m_vScratch) && m_vScratch.size() == 1,
                          "m_vScratch.size() == 1", __LINE__)) {
        return false;
    }
    out.push_back(in[0] - m_vScratch[0]);
    return true;
}

bool DeltaToSlidingMeanFeature::reset() {
    if (m_pSlidingMeanFeature.isNull()) {
        auto pMean = std::make_unique<Math::MeanFeature>();
        auto pWindow = std::make_unique<Math::SlidingWindowFeature>(c_uiSlidingWindowLength);
        m_pSlidingMeanFeature = CloneableObjPtr<Math::SignalFeatureWithMemory>(
            new Math::SignalFeatureComposed(pMean.release(), pWindow.release()));
    }
    return m_pSlidingMeanFeature->reset();
}

Cloneable* DeltaToSlidingMeanFeature::clone() const {
    return new DeltaToSlidingMeanFeature(*this);
}

const char* MyFeature::getName() {
    return getFeatureTypeString(MYFEATURE);
}

bool MyFeature::compute(const Math::DoubleVector&, Math::DoubleVector&) {
    return true;
}

Cloneable* MyFeature::clone() const {
    return new MyFeature(*this);
}

}  // namespace Zantrix::Audio
