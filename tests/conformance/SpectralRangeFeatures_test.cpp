#include "FeatureTesting.h"

#include <murvane/audio/features/SpectralRangeFeatures.h>
#include <murvane/infra/ParameterTrie.h>

using namespace featuretesting;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;
using testkit::LogRecord;
using testkit::LogRecorder;
using Zantrix::ParameterTrie;
using Zantrix::Audio::SpectralRangeFeature;

namespace {

constexpr const char* c_szFrequencyKey = "spectralrange.frequencyHz";
constexpr const char* c_szWidthKey = "spectralrange.widthHz";

ParameterTrie rangeParameters(int frequency, int width) {
    ParameterTrie config;
    config.setIntParameter(c_szFrequencyKey, frequency);
    config.setIntParameter(c_szWidthKey, width);
    return config;
}

LogRecord missingParameter(const std::string& key) {
    return {"murvane.math.RangeFeature", 30000, "Could not find parameter " + key + " in configuration",
            "RangeFeature"};
}

}  // namespace

TEST(SpectralRange, NamesAreThoseOfItsTypeFunctionAndParameters) {
    EXPECT_STREQ(SpectralRangeFeature::getName(), "SPECTRALRANGE");
    EXPECT_STREQ(SpectralRangeFeature::sGetXprName(), "spectralRange");
    EXPECT_STREQ(SpectralRangeFeature::getCenterFrequencyName(), "frequencyHz");
    EXPECT_STREQ(SpectralRangeFeature::getFrequencyWidthName(), "widthHz");
}

TEST(SpectralRange, CutsTheBandOfBinsAroundItsCentre) {
    SpectralRangeFeature feature(440, 20);
    const LogRecorder recorder;
    const DoubleVector values = valuesOf(feature, binNumbers(256));
    EXPECT_THAT(values, ElementsAre(26.0, 27.0, 28.0, 29.0, 30.0, (440.0 - 28.0 * 15.625) / 15.625));
    EXPECT_NEAR(values[5], 0.16, 1e-12);
    EXPECT_THAT(recorder.records(),
                ElementsAre(featureRecord(10000, "SpectralRangeFeature center freq = 440 Hz, width = 20"),
                            featureRecord(10000,
                                          "SpectralRangeFeature new center index = 28,width index = 2,  rel "
                                          "position in bin: 0.16")));
}

TEST(SpectralRange, WithoutWidthTheBandIsOneBin) {
    SpectralRangeFeature feature(1000, 0);
    EXPECT_THAT(valuesOf(feature, binNumbers(128)), ElementsAre(32.0, 0.0));
}

TEST(SpectralRange, CentreHalfWayBetweenBinsIsRoundedUp) {
    // 4 bins of 1000 Hz: 1500 Hz lies half-way between 1 and 2.
    SpectralRangeFeature feature(1500, 0);
    EXPECT_THAT(valuesOf(feature, binNumbers(4)), ElementsAre(2.0, -0.5));
}

TEST(SpectralRange, LaterSpectraOfAnotherLengthKeepTheBins) {
    SpectralRangeFeature feature(440, 20);
    valuesOf(feature, binNumbers(256));
    const LogRecorder recorder;
    EXPECT_THAT(valuesOf(feature, binNumbers(128)), ElementsAre(26.0, 27.0, 28.0, 29.0, 30.0, testing::_));
    EXPECT_THAT(recorder.records(), IsEmpty());
}

TEST(SpectralRange, SpectrumThatEndsWithinTheBandLeavesTheRelativePositionAlone) {
    SpectralRangeFeature feature(440, 20);
    const double position = valuesOf(feature, binNumbers(256)).back();
    const LogRecorder recorder;
    DoubleVector out = {5.0};
    EXPECT_FALSE(feature.compute(binNumbers(30), out));
    EXPECT_THAT(out, ElementsAre(5.0, position));
    EXPECT_THAT(valuesOf(feature, binNumbers(31)), SizeIs(6));
    EXPECT_THAT(recorder.records(), IsEmpty());
}

TEST(SpectralRange, BandBeyondTheLastBinFailsFromTheFirstCallOn) {
    SpectralRangeFeature feature(3990, 100);
    DoubleVector out;
    EXPECT_FALSE(feature.compute(binNumbers(128), out));
    EXPECT_THAT(out, SizeIs(1));
}

TEST(SpectralRange, CentreFrequencyOfZeroFailsTheAssertionEveryTime) {
    SpectralRangeFeature feature;
    const LogRecorder recorder;
    DoubleVector out;
    EXPECT_FALSE(feature.compute(binNumbers(256), out));
    EXPECT_FALSE(feature.compute(binNumbers(256), out));
    EXPECT_THAT(out, IsEmpty());
    const LogRecord frequencies = featureRecord(10000, "SpectralRangeFeature center freq = 0 Hz, width = 0");
    const LogRecord failure = failedFeatureAssertion("m_uiCenterFrequency > 0");
    EXPECT_THAT(recorder.records(), ElementsAre(frequencies, failure, frequencies, failure));
}

TEST(SpectralRange, BandThatReachesBinZeroFailsTheAssertion) {
    SpectralRangeFeature feature(440, 440);
    const LogRecorder recorder;
    DoubleVector out;
    EXPECT_FALSE(feature.compute(binNumbers(256), out));
    EXPECT_THAT(out, IsEmpty());
    EXPECT_THAT(recorder.records(),
                ElementsAre(featureRecord(10000, "SpectralRangeFeature center freq = 440 Hz, width = 440"),
                            failedFeatureAssertion("uiCenterIndex>uiRangeWidth")));
}

TEST(SpectralRange, EmptySpectrumFailsAndLeavesTheBinsToTheNext) {
    SpectralRangeFeature feature(440, 20);
    const LogRecorder recorder;
    DoubleVector out;
    EXPECT_FALSE(feature.compute({}, out));
    EXPECT_THAT(out, IsEmpty());
    EXPECT_THAT(recorder.records(), ElementsAre(testing::_, failedFeatureAssertion("uiCenterIndex>uiRangeWidth")));
    EXPECT_THAT(valuesOf(feature, binNumbers(256)), SizeIs(6));
}

TEST(SpectralRange, HugeFrequenciesSaturateAndFail) {
    const LogRecorder recorder;
    DoubleVector out;
    SpectralRangeFeature far(18446744073709551615U, 20);
    EXPECT_FALSE(far.compute(binNumbers(8192), out));
    EXPECT_THAT(out, SizeIs(1));
    out.clear();
    // Start index and length would both wrap to small numbers.
    SpectralRangeFeature wide(18446744073709551615U, 13835058055282163712U);
    EXPECT_FALSE(wide.compute(binNumbers(4000), out));
    EXPECT_THAT(out, SizeIs(1));
    out.clear();
    SpectralRangeFeature wider(440, 18446744073709551615U);
    EXPECT_FALSE(wider.compute(binNumbers(8192), out));
    EXPECT_THAT(out, IsEmpty());
}

TEST(SpectralRange, ConfigureReadsFrequencyAndWidth) {
    SpectralRangeFeature feature;
    LogRecorder recorder(log4cplus::TRACE_LOG_LEVEL);
    EXPECT_TRUE(feature.configure(rangeParameters(440, 20)));
    EXPECT_THAT(recorder.take(),
                ElementsAre(featureRecord(0, "ENTER: SpectralRangeFeature::configure"),
                            featureRecord(10000, "SpectralRangeFeature center freq = 440 Hz, width = 20"),
                            featureRecord(0, "EXIT:  SpectralRangeFeature::configure")));
    EXPECT_THAT(valuesOf(feature, binNumbers(256)), ElementsAre(26.0, 27.0, 28.0, 29.0, 30.0, testing::_));
}

TEST(SpectralRange, ConfigureMakesTheNextComputationWorkOutTheBinsAnew) {
    SpectralRangeFeature feature(440, 20);
    valuesOf(feature, binNumbers(256));
    EXPECT_TRUE(feature.configure(rangeParameters(1000, 0)));
    EXPECT_THAT(valuesOf(feature, binNumbers(128)), ElementsAre(32.0, 0.0));
}

TEST(SpectralRange, ConfigureWithoutFrequencyChangesNothingAndSucceeds) {
    SpectralRangeFeature feature(440, 20);
    const DoubleVector before = valuesOf(feature, binNumbers(256));
    LogRecorder recorder(log4cplus::TRACE_LOG_LEVEL);
    ParameterTrie config;
    config.setIntParameter(c_szWidthKey, 100);
    EXPECT_TRUE(feature.configure(config));
    EXPECT_THAT(recorder.take(), ElementsAre(featureRecord(0, "ENTER: SpectralRangeFeature::configure"),
                                             missingParameter(c_szFrequencyKey),
                                             featureRecord(0, "EXIT:  SpectralRangeFeature::configure")));
    EXPECT_THAT(valuesOf(feature, binNumbers(256)), IsIdenticalTo(before));
    EXPECT_THAT(recorder.take(), IsEmpty());
}

TEST(SpectralRange, ConfigureWithoutWidthStoresTheFrequencyAndKeepsTheBins) {
    SpectralRangeFeature feature(440, 20);
    const DoubleVector before = valuesOf(feature, binNumbers(256));
    ParameterTrie config;
    config.setIntParameter(c_szFrequencyKey, 1000);
    LogRecorder recorder;
    EXPECT_TRUE(feature.configure(config));
    EXPECT_THAT(recorder.take(),
                ElementsAre(missingParameter(c_szWidthKey),
                            featureRecord(40000,
                                          "Parameter spectralrange.widthHz is not set for spectral range "
                                          "feature")));
    EXPECT_THAT(valuesOf(feature, binNumbers(256)), IsIdenticalTo(before));

    // A feature that has no bins yet takes the new centre and the old width.
    SpectralRangeFeature fresh(440, 20);
    EXPECT_TRUE(fresh.configure(config));
    EXPECT_THAT(valuesOf(fresh, binNumbers(128)), ElementsAre(31.0, 32.0, 33.0, 0.0));
}

TEST(SpectralRange, ConfigureRefusesNegativeValuesAsUnreadable) {
    SpectralRangeFeature feature(440, 20);
    const LogRecorder recorder;
    EXPECT_TRUE(feature.configure(rangeParameters(-440, 20)));
    EXPECT_THAT(valuesOf(feature, binNumbers(256)), ElementsAre(26.0, 27.0, 28.0, 29.0, 30.0, testing::_));
}

TEST(SpectralRange, KeepsItsMannersWithAnyInput) {
    expectFeatureManners(SpectralRangeFeature(440, 20));
    expectFeatureManners(SpectralRangeFeature());
    SpectralRangeFeature configured(440, 20);
    valuesOf(configured, binNumbers(256));
    expectFeatureManners(configured);
}
