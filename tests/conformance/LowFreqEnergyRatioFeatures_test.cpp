#include "FeatureTesting.h"

#include <murvane/audio/features/LowFreqEnergyRatioFeatures.h>

using namespace featuretesting;
using testing::ElementsAre;
using Zantrix::Audio::LowFreqEnergyRatioFeature;
using Zantrix::Audio::LowFreqEnergyRatiosFeature;

namespace {

DoubleVector ratio(const DoubleVector& spectrum) {
    LowFreqEnergyRatioFeature feature;
    return valuesOf(feature, spectrum);
}

DoubleVector ratios(const DoubleVector& spectrum) {
    LowFreqEnergyRatiosFeature feature;
    return valuesOf(feature, spectrum);
}

double sumOf(const DoubleVector& spectrum, std::size_t first, std::size_t end) {
    double sum = 0.0;
    for (std::size_t k = first; k < end; ++k) {
        sum += spectrum[k];
    }
    return sum;
}

}  // namespace

TEST(LowFreqEnergyRatios, NamesAreThoseOfTheirTypesAndFunction) {
    EXPECT_STREQ(LowFreqEnergyRatioFeature::getName(), "LOWFREQENERGYRATIO");
    EXPECT_STREQ(LowFreqEnergyRatiosFeature::getName(), "LOWFREQENERGYRATIOS");
    EXPECT_STREQ(LowFreqEnergyRatiosFeature::sGetXprName(), "lowFreqEnergyRatios");
}

TEST(LowFreqEnergyRatios, BinsAreSplitAt100And1000Hz) {
    const DoubleVector spectrum = risingSpectrum(128);
    EXPECT_THAT(ratio(spectrum), ElementsAre(sumOf(spectrum, 0, 32)));
    EXPECT_THAT(ratios(spectrum), ElementsAre(sumOf(spectrum, 0, 3), sumOf(spectrum, 3, 32)));
}

TEST(LowFreqEnergyRatios, EachBinAtAnEdgeFallsOnItsSide) {
    EXPECT_THAT(ratios(singleBin(128, 2)), ElementsAre(1.0, 0.0));
    EXPECT_THAT(ratios(singleBin(128, 3)), ElementsAre(0.0, 1.0));
    EXPECT_THAT(ratios(singleBin(128, 31)), ElementsAre(0.0, 1.0));
    EXPECT_THAT(ratios(singleBin(128, 32)), ElementsAre(0.0, 0.0));
    EXPECT_THAT(ratio(singleBin(128, 31)), ElementsAre(1.0));
    EXPECT_THAT(ratio(singleBin(128, 32)), ElementsAre(0.0));
}

TEST(LowFreqEnergyRatios, PowerAbove1000HzIsLeftOut) {
    EXPECT_THAT(ratio(singleBin(128, 40)), ElementsAre(0.0));
    EXPECT_THAT(ratios(singleBin(128, 40)), ElementsAre(0.0, 0.0));
}

TEST(LowFreqEnergyRatios, PureDCLiesBelow100Hz) {
    EXPECT_THAT(ratio(singleBin(128, 0)), ElementsAre(1.0));
    EXPECT_THAT(ratios(singleBin(128, 0)), ElementsAre(1.0, 0.0));
}

TEST(LowFreqEnergyRatios, EmptySpectrumGivesZeros) {
    EXPECT_THAT(ratio({}), ElementsAre(0.0));
    EXPECT_THAT(ratios({}), ElementsAre(0.0, 0.0));
}

TEST(LowFreqEnergyRatios, SpectrumOfSixteenBinsHasNoneBelow100Hz) {
    const DoubleVector spectrum = risingSpectrum(16);
    EXPECT_THAT(ratio(spectrum), ElementsAre(sumOf(spectrum, 0, 4)));
    EXPECT_THAT(ratios(spectrum), ElementsAre(0.0, sumOf(spectrum, 0, 4)));
}

TEST(LowFreqEnergyRatios, SpectrumTooShortFor1000HzGivesZeros) {
    for (const std::size_t size : {1, 2, 3}) {
        EXPECT_THAT(ratio(DoubleVector(size, 1.0)), ElementsAre(0.0));
        EXPECT_THAT(ratios(DoubleVector(size, 1.0)), ElementsAre(0.0, 0.0));
    }
    EXPECT_THAT(ratio(DoubleVector(4, 1.0)), ElementsAre(1.0));
}

TEST(LowFreqEnergyRatios, BinCountsFollowTheRoundedBinWidth) {
    for (std::size_t size = 1; size <= 600; ++size) {
        const auto below1000 = static_cast<std::size_t>(1000.0 / (4000.0 / static_cast<double>(size)));
        const auto below100 = static_cast<std::size_t>(100.0 / (4000.0 / static_cast<double>(size)));
        const DoubleVector ones(size, 1.0);
        ASSERT_THAT(ratio(ones), ElementsAre(static_cast<double>(below1000))) << size;
        ASSERT_THAT(ratios(ones), ElementsAre(static_cast<double>(below100), static_cast<double>(below1000 - below100)))
            << size;
    }
}

TEST(LowFreqEnergyRatios, KeepTheirMannersWithAnyInput) {
    expectFeatureManners(LowFreqEnergyRatioFeature());
    expectFeatureManners(LowFreqEnergyRatiosFeature());
}
