#include "LowFreqEnergyRatioArithmetic.h"

#include <murvane/audio/features/LowFreqEnergyRatioFeatures.h>

#include <iterator>

namespace Zantrix::Audio {

const char* LowFreqEnergyRatioFeature::getName() {
    return getFeatureTypeString(LOWFREQENERGYRATIO);
}

bool LowFreqEnergyRatioFeature::compute(const Math::DoubleVector& in, Math::DoubleVector& out) {
    double ratio = 0.0;
    sumOfBins<double>(in, 0, binsBelow(1000.0, in.size()), ratio);
    out.push_back(ratio);
    return true;
}

Cloneable* LowFreqEnergyRatioFeature::clone() const {
    return new LowFreqEnergyRatioFeature(*this);
}

const char* LowFreqEnergyRatiosFeature::getName() {
    return getFeatureTypeString(LOWFREQENERGYRATIOS);
}

const char* LowFreqEnergyRatiosFeature::sGetXprName() {
    return "lowFreqEnergyRatios";
}

bool LowFreqEnergyRatiosFeature::compute(const Math::DoubleVector& in, Math::DoubleVector& out) {
    const std::size_t count100 = binsBelow(100.0, in.size());
    const std::size_t count1000 = binsBelow(1000.0, in.size());
    double ratios[2];
    sumOfBins<double>(in, 0, count100, ratios[0]);
    sumOfBins<double>(in, count100, count1000, ratios[1]);
    out.append(std::begin(ratios), std::end(ratios));
    return true;
}

Cloneable* LowFreqEnergyRatiosFeature::clone() const {
    return new LowFreqEnergyRatiosFeature(*this);
}

}  // namespace Zantrix::Audio
