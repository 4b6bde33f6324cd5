#include "FeatureTesting.h"

#include <murvane/audio/features/SpectralRangeFeatures.h>
#include <murvane/infra/ParameterTrie.h>

#include <stdexcept>

using namespace featuretesting;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;
using testkit::LogRecord;
using testkit::LogRecorder;
using Zantrix::ParameterTrie;
using Zantrix::Audio::MaxSpectralRangesFeature;
using Zantrix::Audio::SpectralRangeFeature;

namespace {

constexpr const char* c_szListKey = "maxspectralranges.frequenciesList";

ParameterTrie listParameter(const std::string& list) {
    ParameterTrie config;
    config.setStringParameter(c_szListKey, list);
    return config;
}

// A configuration whose storage fails.
class FailingConfiguration : public ParameterTrie {
public:
    bool getStringParameter(const char*, std::string& value) const override {
        value = "350 44";
        throw std::runtime_error("storage gone");
    }
};

}  // namespace

TEST(MaxSpectralRanges, NamesAreThoseOfItsTypeFunctionAndParameter) {
    EXPECT_STREQ(MaxSpectralRangesFeature::getName(), "MAXSPECTRALRANGES");
    EXPECT_STREQ(MaxSpectralRangesFeature::sGetXprName(), "maxSpectralRanges");
    EXPECT_STREQ(MaxSpectralRangesFeature::getFrequenciesListName(), "frequenciesList");
}

TEST(MaxSpectralRanges, ReportsTheRangeWithTheStrongestBin) {
    MaxSpectralRangesFeature feature;
    feature.addSpectralRange(440, 20);
    feature.addSpectralRange(1000, 20);
    const double positionOf440 = (440.0 - 28.0 * 15.625) / 15.625;
    EXPECT_THAT(valuesOf(feature, singleBin(256, 29, 0.5)), ElementsAre(0.0, 0.0, 0.0, 0.5, 0.0, positionOf440));
    EXPECT_THAT(valuesOf(feature, singleBin(256, 64, 0.5)), ElementsAre(0.0, 0.0, 0.5, 0.0, 0.0, 0.0));
}

TEST(MaxSpectralRanges, OfEqualRangesTheFirstAddedWins) {
    MaxSpectralRangesFeature feature;
    feature.addSpectralRange(440, 20);
    feature.addSpectralRange(1000, 20);
    DoubleVector spectrum(256, 0.0);
    spectrum[27] = spectrum[64] = 0.5;
    EXPECT_THAT(valuesOf(feature, spectrum), ElementsAre(0.0, 0.5, 0.0, 0.0, 0.0, testing::_));
}

TEST(MaxSpectralRanges, RelativePositionTakesNoPart) {
    // 8 bins of 500 Hz: the position of 1200 Hz, 0.4, is above every bin.
    MaxSpectralRangesFeature feature;
    feature.addSpectralRange(1200, 0);
    feature.addSpectralRange(2000, 0);
    EXPECT_THAT(valuesOf(feature, {0, 0, 0.1, 0, 0.2, 0, 0, 0}), ElementsAre(0.2, 0.0));
}

TEST(MaxSpectralRanges, AllNegativeBinsStillHaveAWinner) {
    MaxSpectralRangesFeature feature;
    feature.addSpectralRange(1000, 0);
    feature.addSpectralRange(2000, 0);
    EXPECT_THAT(valuesOf(feature, {-4, -4, -2, -4, -3, -4, -4, -4}), ElementsAre(-2.0, 0.0));
}

TEST(MaxSpectralRanges, BinsThatAreNoNumbersWinNothing) {
    MaxSpectralRangesFeature feature;
    feature.addSpectralRange(1000, 0);
    DoubleVector out = {1.0};
    EXPECT_TRUE(feature.compute(DoubleVector(8, c_dNaN), out));
    EXPECT_TRUE(feature.compute(DoubleVector(8, -c_dInfinity), out));
    EXPECT_TRUE(feature.compute(DoubleVector(8, std::numeric_limits<double>::lowest()), out));
    EXPECT_THAT(out, ElementsAre(1.0));
}

TEST(MaxSpectralRanges, WithoutRangesFailsTheAssertion) {
    MaxSpectralRangesFeature feature;
    const LogRecorder recorder;
    DoubleVector out = {1.0};
    EXPECT_FALSE(feature.compute(binNumbers(256), out));
    EXPECT_THAT(out, ElementsAre(1.0));
    EXPECT_THAT(recorder.records(), ElementsAre(failedFeatureAssertion("!m_vSpectralRanges.empty()")));
}

TEST(MaxSpectralRanges, FailingRangeAbortsTheWholeAndLeavesTheOutputUnchanged) {
    MaxSpectralRangesFeature feature;
    feature.addSpectralRange(440, 20);
    feature.addSpectralRange(0, 20);
    feature.addSpectralRange(1000, 20);
    const LogRecorder recorder;
    DoubleVector out = {1.0};
    EXPECT_FALSE(feature.compute(binNumbers(256), out));
    EXPECT_THAT(out, ElementsAre(1.0));
    EXPECT_THAT(recorder.records(), ElementsAre(testing::_, testing::_,
                                                featureRecord(10000,
                                                              "SpectralRangeFeature center freq = 0 Hz, "
                                                              "width = 20"),
                                                failedFeatureAssertion("m_uiCenterFrequency > 0")));
    // So does a range beyond the end, which itself appends its relative position.
    MaxSpectralRangesFeature beyond;
    beyond.addSpectralRange(3990, 100);
    EXPECT_FALSE(beyond.compute(binNumbers(256), out));
    EXPECT_THAT(out, ElementsAre(1.0));
}

TEST(MaxSpectralRanges, ConfigureAddsARangeOf20HzForEachFrequencyOfTheList) {
    MaxSpectralRangesFeature feature;
    LogRecorder recorder(log4cplus::TRACE_LOG_LEVEL);
    EXPECT_TRUE(feature.configure(listParameter("350 440")));
    EXPECT_THAT(recorder.take(), ElementsAre(featureRecord(0, "ENTER: MaxSpectralRangesFeature::configure"),
                                             featureRecord(0, "EXIT:  MaxSpectralRangesFeature::configure")));
    EXPECT_THAT(valuesOf(feature, singleBin(256, 22)), ElementsAre(0.0, 0.0, 1.0, 0.0, 0.0, testing::_));
    EXPECT_THAT(recorder.take(),
                ElementsAre(featureRecord(10000, "SpectralRangeFeature center freq = 350 Hz, width = 20"), testing::_,
                            featureRecord(10000, "SpectralRangeFeature center freq = 440 Hz, width = 20"), testing::_));
}

TEST(MaxSpectralRanges, ConfigureAddsToTheRangesAlreadyThere) {
    MaxSpectralRangesFeature feature;
    feature.addSpectralRange(1000, 0);
    EXPECT_TRUE(feature.configure(listParameter("\t350\n 440  ")));
    EXPECT_TRUE(feature.configure(listParameter("600")));
    const LogRecorder recorder;
    valuesOf(feature, binNumbers(256));
    EXPECT_THAT(recorder.records(), SizeIs(8));
}

TEST(MaxSpectralRanges, EmptyListAddsNothingAndSucceeds) {
    MaxSpectralRangesFeature feature;
    const LogRecorder recorder;
    EXPECT_TRUE(feature.configure(listParameter("")));
    EXPECT_TRUE(feature.configure(listParameter(" \t ")));
    EXPECT_THAT(recorder.records(), IsEmpty());
    DoubleVector out;
    EXPECT_FALSE(feature.compute(binNumbers(256), out));
}

TEST(MaxSpectralRanges, ConfigureWithoutAListFails) {
    MaxSpectralRangesFeature feature;
    const LogRecorder recorder;
    EXPECT_FALSE(feature.configure(ParameterTrie()));
    EXPECT_THAT(recorder.records(), ElementsAre(featureRecord(40000,
                                                              "Could not find parameter "
                                                              "maxspectralranges.frequenciesList in provided config")));
}

TEST(MaxSpectralRanges, AtomThatIsNoNumberFailsAndKeepsTheRangesBeforeIt) {
    MaxSpectralRangesFeature feature;
    LogRecorder recorder;
    EXPECT_FALSE(feature.configure(listParameter("350 abc 440")));
    EXPECT_THAT(recorder.take(), ElementsAre(featureRecord(40000, "Could not convert string atom abcin an integer")));
    valuesOf(feature, binNumbers(256));
    EXPECT_THAT(recorder.take(),
                ElementsAre(featureRecord(10000, "SpectralRangeFeature center freq = 350 Hz, width = 20"), testing::_));
}

TEST(MaxSpectralRanges, AtomsAreDecimalDigitsOfAtMost32Bits) {
    for (const char* atom : {"-440", "+440", "440Hz", "440.0", "4e2", "0x1b8", "4294967296", "440,350"}) {
        MaxSpectralRangesFeature feature;
        const LogRecorder recorder;
        EXPECT_FALSE(feature.configure(listParameter(atom))) << atom;
        EXPECT_THAT(recorder.records(), ElementsAre(featureRecord(40000, std::string("Could not convert string atom ") +
                                                                             atom + "in an integer")));
    }
    MaxSpectralRangesFeature feature;
    EXPECT_TRUE(feature.configure(listParameter("4294967295 00440 0")));
}

TEST(MaxSpectralRanges, ExceptionIsCaughtAndReportedWithTheList) {
    MaxSpectralRangesFeature feature;
    const LogRecorder recorder;
    EXPECT_FALSE(feature.configure(FailingConfiguration()));
    EXPECT_THAT(recorder.records(),
                ElementsAre(featureRecord(40000,
                                          "Unexpected std::exception storage gone caught in configure() with "
                                          "maxspectralranges.frequenciesList: \"350 44\"")));
}

TEST(MaxSpectralRanges, ClonesOwnTheirRanges) {
    MaxSpectralRangesFeature feature;
    feature.addSpectralRange(440, 20);
    const auto pClone = cloneOf(feature);
    pClone->addSpectralRange(1000, 20);
    EXPECT_THAT(valuesOf(feature, singleBin(256, 64, 0.5)), ElementsAre(0.0, 0.0, 0.0, 0.0, 0.0, testing::_));
    EXPECT_THAT(valuesOf(*pClone, singleBin(256, 64, 0.5)), ElementsAre(0.0, 0.0, 0.5, 0.0, 0.0, 0.0));
}

TEST(MaxSpectralRanges, KeepsItsMannersWithAnyInput) {
    MaxSpectralRangesFeature feature;
    feature.addSpectralRange(440, 20);
    feature.addSpectralRange(1000, 20);
    expectFeatureManners(feature);
    valuesOf(feature, binNumbers(256));
    expectFeatureManners(feature);
    expectFeatureManners(MaxSpectralRangesFeature());
}
