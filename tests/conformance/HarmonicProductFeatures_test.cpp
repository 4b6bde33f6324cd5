#include "FeatureTesting.h"

#include <murvane/audio/features/HarmonicProductFeatures.h>

using namespace featuretesting;
using testing::Each;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;
using Zantrix::Audio::AntiHarmonicProductFeature;
using Zantrix::Audio::HarmonicProductFeature;
using Zantrix::Audio::OldHarmonicProductFeature;
using Zantrix::Audio::RobustHarmonicProductFeature;

namespace {

// The product of scaled factors, each multiplied from the left to what is there, as the features form it.
double productOf(double scale, const DoubleVector& spectrum, const std::vector<std::size_t>& bins) {
    double product = scale * spectrum[bins[0]];
    for (std::size_t i = 1; i < bins.size(); ++i) {
        product = (scale * spectrum[bins[i]]) * product;
    }
    return product;
}

}  // namespace

TEST(HarmonicProduct, NamesAreThoseOfTheirTypes) {
    EXPECT_STREQ(HarmonicProductFeature::getName(), "HARMONICPRODUCT");
    EXPECT_STREQ(HarmonicProductFeature::sGetXprName(), "harmonicProduct");
    EXPECT_STREQ(RobustHarmonicProductFeature::getName(), "ROBUSTHARMONICPRODUCT");
    EXPECT_STREQ(OldHarmonicProductFeature::getName(), "OLDHARMONICPRODUCT");
    EXPECT_STREQ(AntiHarmonicProductFeature::getName(), "ANTIHARMONICPRODUCT");
}

TEST(HarmonicProduct, MultipliesEachCandidateWithItsHarmonicsTwoToFive) {
    const DoubleVector spectrum = risingSpectrum(128);
    HarmonicProductFeature feature;
    const DoubleVector values = valuesOf(feature, spectrum);
    ASSERT_THAT(values, SizeIs(26));
    for (std::size_t i = 0; i < 3; ++i) {
        EXPECT_EQ(values[i], 0.0) << "a candidate below 100 Hz";
    }
    for (std::size_t i = 3; i < 26; ++i) {
        EXPECT_EQ(values[i], productOf(26.0, spectrum, {i, 2 * i, 3 * i, 4 * i, 5 * i})) << "candidate " << i;
        EXPECT_NEAR(values[i] / (std::pow(26.0, 5) * spectrum[i] * spectrum[2 * i] * spectrum[3 * i] * spectrum[4 * i] *
                                 spectrum[5 * i]),
                    1.0, 1e-13);
    }
}

TEST(HarmonicProduct, SpectrumTooShortFor100HzKeepsCandidateOneButNotBinZero) {
    HarmonicProductFeature feature;
    EXPECT_THAT(valuesOf(feature, DoubleVector(11, 1.0)), ElementsAre(0.0, 243.0, 243.0));
    EXPECT_THAT(valuesOf(feature, DoubleVector(39, 1.0)), SizeIs(8));
    EXPECT_EQ(valuesOf(feature, DoubleVector(39, 1.0))[1], std::pow(8.0, 5));
}

TEST(HarmonicProduct, ShortSpectraGiveOneZeroAndEmptyOnesNothing) {
    HarmonicProductFeature harmonic;
    RobustHarmonicProductFeature robust;
    for (std::size_t size = 1; size <= 5; ++size) {
        EXPECT_THAT(valuesOf(harmonic, DoubleVector(size, 1.0)), ElementsAre(0.0));
        EXPECT_THAT(valuesOf(robust, DoubleVector(size, 1.0)), ElementsAre(0.0));
    }
    EXPECT_THAT(valuesOf(harmonic, {}), IsEmpty());
    EXPECT_THAT(valuesOf(robust, {}), IsEmpty());
}

TEST(HarmonicProduct, KeepsItsMannersWithAnyInput) {
    expectFeatureManners(HarmonicProductFeature());
}

TEST(RobustHarmonicProduct, TakesTheNextCandidatesHarmonicsWhileTheyAreBins) {
    const DoubleVector spectrum = risingSpectrum(128);
    RobustHarmonicProductFeature feature;
    const DoubleVector values = valuesOf(feature, spectrum);
    ASSERT_THAT(values, SizeIs(26));
    EXPECT_THAT(DoubleVector(values.begin(), values.begin() + 3), Each(0.0));
    for (std::size_t i = 3; i < 25; ++i) {
        EXPECT_EQ(values[i], productOf(26.0, spectrum, {i, 2 * (i + 1), 3 * (i + 1), 4 * (i + 1), 5 * (i + 1)}))
            << "candidate " << i;
    }
}

TEST(RobustHarmonicProduct, FallsBackToTheHarmonicItselfPastTheEnd) {
    const DoubleVector spectrum = risingSpectrum(128);
    RobustHarmonicProductFeature feature;
    EXPECT_EQ(valuesOf(feature, spectrum)[25], productOf(26.0, spectrum, {25, 52, 78, 104, 125}));
}

TEST(RobustHarmonicProduct, BinAtTheVeryEndIsPastIt) {
    // 26 * 5 is 130, the first index that is no bin.
    const DoubleVector spectrum = risingSpectrum(130);
    RobustHarmonicProductFeature feature;
    EXPECT_EQ(valuesOf(feature, spectrum)[25], productOf(26.0, spectrum, {25, 52, 78, 104, 125}));
    const DoubleVector longer = risingSpectrum(131);
    EXPECT_EQ(valuesOf(feature, longer)[25], productOf(27.0, longer, {25, 52, 78, 104, 130}));
}

TEST(RobustHarmonicProduct, KeepsItsMannersWithAnyInput) {
    expectFeatureManners(RobustHarmonicProductFeature());
}

TEST(OldHarmonicProduct, CountsBinsFromOneAndZeroesNothingBelow100Hz) {
    const DoubleVector spectrum = risingSpectrum(128);
    OldHarmonicProductFeature feature;
    const DoubleVector values = valuesOf(feature, spectrum);
    ASSERT_THAT(values, SizeIs(128));
    EXPECT_EQ(values[0], productOf(128.0, spectrum, {0, 1, 2, 3}));
    for (std::size_t i = 0; i < 32; ++i) {
        EXPECT_EQ(values[i], productOf(128.0, spectrum, {i, 2 * i + 1, 3 * i + 2, 4 * i + 3})) << "candidate " << i;
    }
    EXPECT_THAT(DoubleVector(values.begin() + 32, values.end()), Each(0.0));
}

TEST(OldHarmonicProduct, ShortSpectraGiveAsManyZerosAsBins) {
    OldHarmonicProductFeature feature;
    EXPECT_THAT(valuesOf(feature, {}), IsEmpty());
    EXPECT_THAT(valuesOf(feature, {1.0}), ElementsAre(0.0));
    EXPECT_THAT(valuesOf(feature, {1.0, 1.0, 1.0}), ElementsAre(0.0, 0.0, 0.0));
    EXPECT_THAT(valuesOf(feature, {1.0, 1.0, 1.0, 1.0}), ElementsAre(256.0, 0.0, 0.0, 0.0));
}

TEST(OldHarmonicProduct, ShorterSpectrumLeavesNothingOfALongerOne) {
    OldHarmonicProductFeature feature;
    valuesOf(feature, DoubleVector(128, 1.0));
    EXPECT_THAT(valuesOf(feature, DoubleVector(8, 0.0)), ElementsAre(0.0, 0.0, 0.0, 0.0, 0.0, 0.0, 0.0, 0.0));
}

TEST(OldHarmonicProduct, KeepsItsMannersWithAnyInput) {
    expectFeatureManners(OldHarmonicProductFeature());
}

TEST(AntiHarmonicProduct, MultipliesTheBinsHalfACandidateBelowEachHarmonic) {
    const DoubleVector spectrum = risingSpectrum(128);
    AntiHarmonicProductFeature feature;
    const DoubleVector values = valuesOf(feature, spectrum);
    ASSERT_THAT(values, SizeIs(24));
    for (std::size_t i = 2; i <= 25; ++i) {
        double product = 1.0;
        for (std::size_t h = 1; h <= 5; ++h) {
            product = ((26.0 * spectrum[h * i - i / 2]) * 26.0) * product;
        }
        EXPECT_EQ(values[i - 2], product) << "candidate " << i;
    }
}

TEST(AntiHarmonicProduct, EachFactorIsScaledTwice) {
    AntiHarmonicProductFeature feature;
    const DoubleVector values = valuesOf(feature, DoubleVector(128, 1.0));
    EXPECT_THAT(values, Each(testing::DoubleEq(std::pow(26.0, 10))));
}

TEST(AntiHarmonicProduct, SilentSpectrumGivesOnes) {
    AntiHarmonicProductFeature feature;
    EXPECT_THAT(valuesOf(feature, DoubleVector(128, 0.0)), testing::AllOf(SizeIs(24), Each(1.0)));
}

TEST(AntiHarmonicProduct, FewerThanElevenBinsFailTheAssertion) {
    AntiHarmonicProductFeature feature;
    for (const std::size_t size : {0, 1, 2, 3, 5, 6, 10}) {
        const testkit::LogRecorder recorder;
        DoubleVector out = {4.0};
        EXPECT_FALSE(feature.compute(DoubleVector(size, 0.1), out)) << size;
        EXPECT_THAT(out, ElementsAre(4.0));
        EXPECT_THAT(recorder.records(), ElementsAre(failedFeatureAssertion("m_vScratch.size() > 2")));
    }
    EXPECT_THAT(valuesOf(feature, DoubleVector(11, 1.0)), ElementsAre(59049.0));
}

TEST(AntiHarmonicProduct, KeepsItsMannersWithAnyInput) {
    expectFeatureManners(AntiHarmonicProductFeature());
}
