#include "FeatureTesting.h"

#include <murvane/audio/features/SpectralShapeFeatures.h>

using namespace featuretesting;
using testing::DoubleEq;
using testing::DoubleNear;
using testing::ElementsAre;
using testing::IsEmpty;
using Zantrix::Audio::FlatnessFeature;
using Zantrix::Audio::SpectralSlopeFeature;
using Zantrix::Audio::SpectralWeightedAreaFeature;

TEST(Flatness, NamesAreThoseOfItsTypeAndFunction) {
    EXPECT_STREQ(FlatnessFeature::getName(), "FLATNESS");
    EXPECT_STREQ(FlatnessFeature::sGetXprName(), "flatness");
    const FlatnessFeature feature;
    EXPECT_STREQ(feature.getFunctionName(), "flatness");
    EXPECT_THAT(feature.getArgumentNames(), ElementsAre("x"));
}

TEST(Flatness, FlatSpectrumGivesOne) {
    FlatnessFeature feature;
    EXPECT_THAT(valuesOf(feature, DoubleVector(128, 1.0 / 128)), ElementsAre(DoubleNear(1.0, 1e-12)));
}

TEST(Flatness, AllZeroSpectrumGivesExactlyOne) {
    FlatnessFeature feature;
    EXPECT_THAT(valuesOf(feature, DoubleVector(128, 0.0)), ElementsAre(1.0));
}

TEST(Flatness, SingleFullBinGivesExactlyOne) {
    FlatnessFeature feature;
    EXPECT_THAT(valuesOf(feature, singleBin(128, 17)), ElementsAre(1.0));
}

TEST(Flatness, EmptySpectrumGivesExactlyOne) {
    FlatnessFeature feature;
    EXPECT_THAT(valuesOf(feature, {}), ElementsAre(1.0));
}

TEST(Flatness, IsLTimesTheGeometricMean) {
    FlatnessFeature feature;
    EXPECT_THAT(valuesOf(feature, {0.5, 0.125, 0.25, 0.125}),
                ElementsAre(DoubleNear(4.0 * std::pow(0.5 * 0.125 * 0.25 * 0.125, 0.25), 1e-15)));
}

TEST(Flatness, ZerosAreLeftOutOfTheProductAndStillCountInTheExponent) {
    FlatnessFeature feature;
    EXPECT_THAT(valuesOf(feature, {0.25, 0.0, 0.75, 0.0}),
                ElementsAre(DoubleNear(4.0 * std::pow(0.25 * 0.75, 0.25), 1e-15)));
}

TEST(Flatness, BlocksCloseAfterTwentyOneValuesZerosIncluded) {
    // One value in each block of 21, and one in what is left over: the powers multiply in the order of the blocks.
    DoubleVector spectrum(50, 0.0);
    spectrum[20] = 0.3;
    spectrum[21] = 0.2;
    spectrum[42] = 0.7;
    const double exponent = 1.0 / 50.0;
    const double mean = std::pow(0.3, exponent) * std::pow(0.2, exponent) * std::pow(0.7, exponent);
    FlatnessFeature feature;
    EXPECT_THAT(valuesOf(feature, spectrum), ElementsAre(mean * 50.0));
}

TEST(Flatness, BlocksKeepAProductFromUnderflowing) {
    FlatnessFeature feature;
    EXPECT_THAT(valuesOf(feature, DoubleVector(42, 1e-14)), ElementsAre(DoubleNear(42.0 * 1e-14, 1e-24)));
}

TEST(Flatness, NaNCountsAsNotZero) {
    FlatnessFeature feature;
    EXPECT_THAT(valuesOf(feature, {0.5, c_dNaN, 0.5}), ElementsAre(testing::IsNan()));
}

TEST(Flatness, KeepsItsMannersWithAnyInput) {
    expectFeatureManners(FlatnessFeature());
}

TEST(SpectralWeightedArea, NameIsThatOfItsType) {
    EXPECT_STREQ(SpectralWeightedAreaFeature::getName(), "SPECTRALWEIGHTEDAREA");
}

TEST(SpectralWeightedArea, WeighsTheBandByBinNumberAndTruncatedBinWidth) {
    const DoubleVector spectrum = risingSpectrum(128);
    SpectralWeightedAreaFeature feature(8000, 500, 1500);
    const testkit::LogRecorder recorder;
    const DoubleVector values = valuesOf(feature, spectrum);
    double area = 0.0;
    for (std::size_t k = 15; k <= 48; ++k) {
        area += (static_cast<double>(k) * spectrum[k]) * 31.0;
    }
    EXPECT_THAT(values, ElementsAre(area));
    EXPECT_THAT(recorder.records(), ElementsAre(featureRecord(10000, "Index min: 15, index max: 48")));
}

TEST(SpectralWeightedArea, IndicesAreLoggedOnceAndOnlyWhereDebugIsEnabled) {
    SpectralWeightedAreaFeature feature(8000, 500, 1500);
    testkit::LogRecorder recorder;
    valuesOf(feature, DoubleVector(128, 1.0 / 128));
    EXPECT_THAT(recorder.take(), testing::SizeIs(1));
    valuesOf(feature, DoubleVector(128, 1.0 / 128));
    valuesOf(*cloneOf(feature), DoubleVector(128, 1.0 / 128));
    EXPECT_THAT(recorder.take(), IsEmpty());

    const testkit::LogRecorder quiet(log4cplus::INFO_LOG_LEVEL);
    SpectralWeightedAreaFeature other(8000, 500, 1500);
    valuesOf(other, DoubleVector(128, 1.0 / 128));
    EXPECT_THAT(quiet.records(), IsEmpty());
}

TEST(SpectralWeightedArea, IndicesStayThoseOfTheFirstSpectrum) {
    SpectralWeightedAreaFeature feature(8000, 500, 1500);
    valuesOf(feature, DoubleVector(128, 1.0 / 128));
    const testkit::LogRecorder recorder;
    DoubleVector out;
    EXPECT_FALSE(feature.compute(DoubleVector(32, 1.0 / 32), out));
    EXPECT_THAT(out, IsEmpty());
    EXPECT_THAT(recorder.records(), ElementsAre(failedFeatureAssertion("m_uiIndexMax < uiInputSize")));
    // A longer spectrum is cut at the same bins, with its own bin width.
    EXPECT_THAT(valuesOf(feature, singleBin(256, 20)), ElementsAre(20.0 * 15.0));
    EXPECT_THAT(valuesOf(feature, singleBin(256, 60)), ElementsAre(0.0));
}

TEST(SpectralWeightedArea, BothEndsOfTheBandBelongToIt) {
    SpectralWeightedAreaFeature feature(8000, 500, 1500);
    EXPECT_THAT(valuesOf(feature, singleBin(128, 14)), ElementsAre(0.0));
    EXPECT_THAT(valuesOf(feature, singleBin(128, 15)), ElementsAre(15.0 * 31.0));
    EXPECT_THAT(valuesOf(feature, singleBin(128, 48)), ElementsAre(48.0 * 31.0));
    EXPECT_THAT(valuesOf(feature, singleBin(128, 49)), ElementsAre(0.0));
}

TEST(SpectralWeightedArea, HalfABinIsAddedAtEitherEdge) {
    // 505 Hz lie at 16.16 bins, 1520 Hz at 48.64.
    SpectralWeightedAreaFeature feature(8000, 505, 1520);
    const testkit::LogRecorder recorder;
    valuesOf(feature, DoubleVector(128, 1.0 / 128));
    EXPECT_THAT(recorder.records(), ElementsAre(featureRecord(10000, "Index min: 15, index max: 49")));
}

TEST(SpectralWeightedArea, LowEdgeBelowHalfABinStartsAtBinZero) {
    SpectralWeightedAreaFeature feature(8000, 10, 1500);
    const testkit::LogRecorder recorder;
    EXPECT_THAT(valuesOf(feature, singleBin(128, 1)), ElementsAre(31.0));
    EXPECT_THAT(recorder.records(), ElementsAre(featureRecord(10000, "Index min: 0, index max: 48")));
}

TEST(SpectralWeightedArea, ReversedBandFailsTheAssertion) {
    SpectralWeightedAreaFeature feature(8000, 1500, 500);
    const testkit::LogRecorder recorder;
    DoubleVector out;
    EXPECT_FALSE(feature.compute(DoubleVector(128, 1.0 / 128), out));
    EXPECT_THAT(out, IsEmpty());
    EXPECT_THAT(recorder.records(), ElementsAre(featureRecord(10000, "Index min: 47, index max: 16"),
                                                failedFeatureAssertion("m_uiIndexMin < m_uiIndexMax")));
}

TEST(SpectralWeightedArea, BandEndingAtTheSpectrumsLengthFailsTheAssertion) {
    SpectralWeightedAreaFeature feature(8000, 500, 4000);
    const testkit::LogRecorder recorder;
    DoubleVector out;
    EXPECT_FALSE(feature.compute(DoubleVector(128, 1.0 / 128), out));
    EXPECT_THAT(out, IsEmpty());
    EXPECT_THAT(recorder.records(), ElementsAre(featureRecord(10000, "Index min: 15, index max: 128"),
                                                failedFeatureAssertion("m_uiIndexMax < uiInputSize")));
}

TEST(SpectralWeightedArea, WithoutABandEveryCallFailsAndWorksTheIndicesOutAgain) {
    SpectralWeightedAreaFeature feature;
    const testkit::LogRecorder recorder;
    DoubleVector out;
    EXPECT_FALSE(feature.compute(DoubleVector(128, 1.0 / 128), out));
    EXPECT_FALSE(feature.compute(DoubleVector(128, 1.0 / 128), out));
    EXPECT_THAT(out, IsEmpty());
    EXPECT_THAT(recorder.records(), ElementsAre(featureRecord(10000, "Index min: 0, index max: 0"),
                                                failedFeatureAssertion("m_uiIndexMin < m_uiIndexMax"),
                                                featureRecord(10000, "Index min: 0, index max: 0"),
                                                failedFeatureAssertion("m_uiIndexMin < m_uiIndexMax")));
}

TEST(SpectralWeightedArea, EmptyFirstSpectrumLeavesTheIndicesToTheNext) {
    SpectralWeightedAreaFeature feature(8000, 500, 1500);
    DoubleVector out;
    {
        const testkit::LogRecorder recorder;
        EXPECT_FALSE(feature.compute({}, out));
    }
    EXPECT_THAT(valuesOf(feature, singleBin(128, 20)), ElementsAre(20.0 * 31.0));
}

TEST(SpectralWeightedArea, IndicesSaturateInsteadOfWrapping) {
    SpectralWeightedAreaFeature feature(0, 0, 18446744073709551615U);
    const testkit::LogRecorder recorder;
    DoubleVector out;
    EXPECT_FALSE(feature.compute(DoubleVector(128, 1.0 / 128), out));
    EXPECT_THAT(recorder.records(), ElementsAre(featureRecord(10000, "Index min: 0, index max: 18446744073709551615"),
                                                failedFeatureAssertion("m_uiIndexMax < uiInputSize")));
}

TEST(SpectralWeightedArea, KeepsItsMannersWithAnyInput) {
    expectFeatureManners(SpectralWeightedAreaFeature(8000, 500, 1500));
    expectFeatureManners(SpectralWeightedAreaFeature());
}

TEST(SpectralSlope, LeavesTheOutputUnchangedAndSucceeds) {
    EXPECT_STREQ(SpectralSlopeFeature::getName(), "SPECTRALSLOPE");
    SpectralSlopeFeature feature;
    DoubleVector out = {1.0, 2.0};
    EXPECT_TRUE(feature.compute(risingSpectrum(128), out));
    EXPECT_TRUE(feature.compute({}, out));
    EXPECT_THAT(out, ElementsAre(1.0, 2.0));
}

TEST(SpectralSlope, KeepsItsMannersWithAnyInput) {
    expectFeatureManners(SpectralSlopeFeature());
}
