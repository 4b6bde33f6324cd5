#include "FeatureTesting.h"

#include <murvane/audio.h>

using namespace featuretesting;
using namespace Zantrix::Audio;
using testing::ElementsAre;
using testing::IsEmpty;
using Zantrix::MemAccount;

namespace {

std::unique_ptr<SignalFeature> newFeature(const std::string& name) {
    AudioFeatureFactory factory;
    return std::unique_ptr<SignalFeature>(factory.getNewBaseFeature(name.c_str()));
}

template <typename F>
bool makes(const std::string& name) {
    const auto pFeature = newFeature(name);
    if (pFeature == nullptr) {
        return false;
    }
    const SignalFeature& feature = *pFeature;
    return typeid(feature) == typeid(F);
}

std::string lowerCase(std::string name) {
    std::transform(name.begin(), name.end(), name.begin(), [](unsigned char c) { return std::tolower(c); });
    return name;
}

struct Row {
    const char* name;
    bool (*makesItsClass)(const std::string&);
};

// Every name of the families here that takes no parameter.
constexpr Row c_plainNames[] = {
    {"FLATNESS", makes<FlatnessFeature>},
    {"OLDHARMONICPRODUCT", makes<OldHarmonicProductFeature>},
    {"HARMONICPRODUCT", makes<HarmonicProductFeature>},
    {"ROBUSTHARMONICPRODUCT", makes<RobustHarmonicProductFeature>},
    {"ANTIHARMONICPRODUCT", makes<AntiHarmonicProductFeature>},
    {"SPECTRALWEIGHTEDAREA", makes<SpectralWeightedAreaFeature>},
    {"SILENCERATIO", makes<SilenceRatioFeature>},
    {"NOISERATIO", makes<SilenceRatioFeature>},
    {"AMPLITUDEDISTRIBUTION", makes<RatiosFeature>},
    {"TEMPORALAMPLITUDEDISTRIBUTION", makes<RatiosFeature>},
    {"PEAKS", makes<PeaksFeature>},
    {"NEIGHBOURHOODOFMAX", makes<MaxNeighbourhoodFeature>},
    {"LOWFREQENERGYRATIO", makes<LowFreqEnergyRatioFeature>},
    {"LOWFREQENERGYRATIOS", makes<LowFreqEnergyRatiosFeature>},
    {"DELTATOSLIDINGMEAN", makes<DeltaToSlidingMeanFeature>},
};

testkit::LogRecord lookingFor(const std::string& base) {
    return {"murvane.audio.AudioFeatureFactory", 0, "Looking for feature: " + base, "AudioFeatureFactory"};
}

testkit::LogRecord wrongParameters(const std::string& text) {
    return testkit::failedAssertion(text, "AudioFeatureFactory");
}

}  // namespace

TEST(AudioFeatureFactoryFamilies, PlainNamesInAnyCaseMakeTheirClasses) {
    for (const Row& row : c_plainNames) {
        EXPECT_TRUE(row.makesItsClass(row.name)) << row.name;
        EXPECT_TRUE(row.makesItsClass(lowerCase(row.name))) << row.name;
    }
}

TEST(AudioFeatureFactoryFamilies, PlainNamesTakeNoParameter) {
    for (const Row& row : c_plainNames) {
        const testkit::LogRecorder recorder(log4cplus::TRACE_LOG_LEVEL);
        EXPECT_EQ(newFeature(std::string(row.name) + "(1)"), nullptr) << row.name;
        EXPECT_THAT(recorder.records(), ElementsAre(lookingFor(row.name), wrongParameters("vParams.empty()")));
    }
}

TEST(AudioFeatureFactoryFamilies, TypesThatAreConstructedDirectlyGiveNullSilently) {
    for (const char* name : {"ENERGYHISTOGRAM", "CLIPPINGRATE", "SPECTRALSLOPE", "MYFEATURE"}) {
        const testkit::LogRecorder recorder(log4cplus::TRACE_LOG_LEVEL);
        EXPECT_EQ(newFeature(name), nullptr) << name;
        EXPECT_THAT(recorder.records(), ElementsAre(lookingFor(name)));
    }
}

TEST(AudioFeatureFactoryFamilies, NonLogPeaksHaveNoNameToBeAskedBy) {
    const testkit::LogRecorder recorder;
    for (const char* name : {"???Feature_FeatureType???", "???FEATURE_FEATURETYPE???", "NONLOGPEAKS", "nonLogPeaks"}) {
        EXPECT_EQ(newFeature(name), nullptr) << name;
    }
}

TEST(AudioFeatureFactoryFamilies, SpectralRangeTakesCentreAndWidthOrNothing) {
    const auto pRange = newFeature("SPECTRALRANGE(440,20)");
    ASSERT_NE(dynamic_cast<SpectralRangeFeature*>(pRange.get()), nullptr);
    const testkit::LogRecorder recorder;
    EXPECT_THAT(valuesOf(*pRange, singleBin(256, 26)), ElementsAre(1.0, 0.0, 0.0, 0.0, 0.0, testing::_));
    EXPECT_THAT(recorder.records(),
                ElementsAre(featureRecord(10000, "SpectralRangeFeature center freq = 440 Hz, width = 20"), testing::_));

    const auto pUnconfigured = newFeature("SpectralRange");
    ASSERT_NE(dynamic_cast<SpectralRangeFeature*>(pUnconfigured.get()), nullptr);
    DoubleVector out;
    EXPECT_FALSE(pUnconfigured->compute(singleBin(256, 26), out));
}

TEST(AudioFeatureFactoryFamilies, SpectralRangeRefusesOneOrThreeParameters) {
    for (const char* name : {"SPECTRALRANGE(440)", "SPECTRALRANGE(440,20,1)"}) {
        const testkit::LogRecorder recorder;
        EXPECT_EQ(newFeature(name), nullptr) << name;
        EXPECT_THAT(recorder.records(), ElementsAre(wrongParameters("vParams.size() == 2")));
    }
}

TEST(AudioFeatureFactoryFamilies, MaxSpectralRangesTakesOneRangeOf20HzPerParameter) {
    const auto pRanges = newFeature("MAXSPECTRALRANGES(440,480)");
    ASSERT_NE(dynamic_cast<MaxSpectralRangesFeature*>(pRanges.get()), nullptr);
    const testkit::LogRecorder recorder;
    valuesOf(*pRanges, singleBin(256, 28));
    EXPECT_THAT(recorder.records(),
                ElementsAre(featureRecord(10000, "SpectralRangeFeature center freq = 440 Hz, width = 20"), testing::_,
                            featureRecord(10000, "SpectralRangeFeature center freq = 480 Hz, width = 20"), testing::_));
}

TEST(AudioFeatureFactoryFamilies, MaxSpectralRangesRefusesNoParameter) {
    const testkit::LogRecorder recorder;
    EXPECT_EQ(newFeature("MAXSPECTRALRANGES"), nullptr);
    EXPECT_THAT(recorder.records(), ElementsAre(wrongParameters("!vParams.empty()")));
}

TEST(AudioFeatureFactoryFamilies, UnreadableParametersGiveNullSilently) {
    const testkit::LogRecorder recorder;
    EXPECT_EQ(newFeature("SPECTRALRANGE(440,wide)"), nullptr);
    EXPECT_EQ(newFeature("SPECTRALRANGE(x,20)"), nullptr);
    EXPECT_EQ(newFeature("MAXSPECTRALRANGES(440,abc)"), nullptr);
    EXPECT_EQ(newFeature("MAXSPECTRALRANGES(440,18446744073709551616)"), nullptr);
    EXPECT_THAT(recorder.records(), IsEmpty());
}

TEST(AudioFeatureFactoryFamilies, TextBehindANumberIsIgnored) {
    const auto pRange = newFeature("SPECTRALRANGE(440Hz,20x)");
    ASSERT_NE(pRange, nullptr);
    EXPECT_THAT(valuesOf(*pRange, singleBin(256, 26)), ElementsAre(1.0, 0.0, 0.0, 0.0, 0.0, testing::_));
}

TEST(AudioFeatureFactoryFamilies, SpectralWeightedAreaLooksFrom500To1500HzAt8000) {
    const auto pFeature = newFeature("SPECTRALWEIGHTEDAREA");
    const testkit::LogRecorder recorder;
    EXPECT_THAT(valuesOf(*pFeature, singleBin(128, 20)), ElementsAre(620.0));
    EXPECT_THAT(recorder.records(), ElementsAre(featureRecord(10000, "Index min: 15, index max: 48")));
}

TEST(AudioFeatureFactoryFamilies, SilenceAndNoiseRatioDifferInTheirDivisors) {
    const DoubleVector window = {1.0, 0.05, 0.015, 0.0};
    EXPECT_THAT(valuesOf(*newFeature("SILENCERATIO"), window), ElementsAre(0.5));
    EXPECT_THAT(valuesOf(*newFeature("NOISERATIO"), window), ElementsAre(0.75));
}

TEST(AudioFeatureFactoryFamilies, OnlyTheTemporalDistributionRemembersThePeak) {
    const auto pPlain = newFeature("AMPLITUDEDISTRIBUTION");
    const auto pTemporal = newFeature("TEMPORALAMPLITUDEDISTRIBUTION");
    for (SignalFeature* pFeature : {pPlain.get(), pTemporal.get()}) {
        valuesOf(*pFeature, {1.0});
    }
    EXPECT_THAT(valuesOf(*pPlain, {0.15}), ElementsAre(1.0, 0.0, 0.0, 0.0));
    EXPECT_THAT(valuesOf(*pTemporal, {0.15}), ElementsAre(0.0, 1.0, 0.0, 0.0));
}

TEST(AudioFeatureFactoryFamilies, FlatnessComesFromTheAccountOfFunctionAdaptors) {
    const MemAccount& account = MemAccount::named("FunctionAdaptor");
    const auto before = account.live();
    {
        const auto pFeature = newFeature("FLATNESS");
        EXPECT_EQ(account.live(), before + 1);
        const std::unique_ptr<Zantrix::Cloneable> pClone(pFeature->clone());
        EXPECT_EQ(account.live(), before + 2);
        const auto pOther = newFeature("PEAKS");
        EXPECT_EQ(account.live(), before + 2);
    }
    EXPECT_EQ(account.live(), before);
}

TEST(AudioFeatureFactoryFamilies, EveryCallMakesASeparateFeature) {
    const auto pFirst = newFeature("DELTATOSLIDINGMEAN");
    const auto pSecond = newFeature("DELTATOSLIDINGMEAN");
    valuesOf(*pFirst, {8.0});
    EXPECT_THAT(valuesOf(*pSecond, {4.0}), ElementsAre(0.0));
    EXPECT_THAT(valuesOf(*pFirst, {4.0}), ElementsAre(-2.0));
}

TEST(AudioFeatureFactoryFamilies, ElementsCompose) {
    AudioFeatureFactory factory;
    const std::unique_ptr<SignalFeature> pFeature(factory.getNewFeature("DELTATOSLIDINGMEAN_FLATNESS"));
    ASSERT_NE(pFeature, nullptr);
    EXPECT_THAT(valuesOf(*pFeature, DoubleVector(4, 0.0)), ElementsAre(0.0));
    EXPECT_THAT(valuesOf(*pFeature, {1.0, 1.0, 1.0, 0.0625}), ElementsAre(0.5));
}

TEST(FunctionNames, AreThoseThatFormulasUse) {
    EXPECT_STREQ(SpectrumFeature::sGetXprName(), "spectrum");
    EXPECT_STREQ(ZeroCrossingRateFeature::sGetXprName(), "zeroCrossingRate");
}

template <typename Function>
class AdaptedFunction : public testing::Test {};

using AdaptedFunctions =
    testing::Types<SpectrumFeature, FlatnessFeature, Zantrix::XprHarmonicProduct, Zantrix::XprSilenceRatio,
                   Zantrix::XprNonLogPeaks, Zantrix::XprPeaks, Zantrix::XprPonderatedPeaks,
                   Zantrix::XprZeroCrossingRate, Zantrix::XprSpectralRange, Zantrix::XprMaxSpectralRanges,
                   Zantrix::XprLowFreqEnergyRatios>;
TYPED_TEST_SUITE(AdaptedFunction, AdaptedFunctions);

TYPED_TEST(AdaptedFunction, TellsItsNameWithoutAnObject) {
    EXPECT_STREQ(TypeParam::sGetXprName(), TypeParam().getFunctionName());
}

// The direct bases that programs may rely on when they convert or reset features.
TEST(FeatureBases, OnlyFeaturesWithAMemoryAreResettable) {
    using Zantrix::Resettable;
    using Zantrix::Math::SignalFeatureWithMemory;
    using Zantrix::Math::SignalFeatureWithParameters;
    static_assert(std::is_base_of_v<SignalFeatureWithMemory, RatiosFeature>);
    static_assert(std::is_base_of_v<SignalFeatureWithMemory, DeltaToSlidingMeanFeature>);
    static_assert(std::is_base_of_v<SignalFeatureWithMemory, MeanEnergyAboveThreshFeature>);
    static_assert(std::is_base_of_v<SignalFeatureWithMemory, MeanMaxFeature>);
    static_assert(std::is_base_of_v<SignalFeatureWithParameters, SpectralRangeFeature>);
    static_assert(std::is_base_of_v<SignalFeatureWithParameters, MaxSpectralRangesFeature>);
    for (const Row& row : c_plainNames) {
        const auto pFeature = newFeature(row.name);
        ASSERT_NE(pFeature, nullptr);
        EXPECT_NE(dynamic_cast<AudioFeature*>(pFeature.get()), nullptr) << row.name;
        EXPECT_EQ(dynamic_cast<SignalFeatureWithParameters*>(pFeature.get()), nullptr) << row.name;
        const bool hasMemory = std::string(row.name).find("AMPLITUDEDISTRIBUTION") != std::string::npos ||
                               std::string(row.name) == "DELTATOSLIDINGMEAN";
        EXPECT_EQ(dynamic_cast<Resettable*>(pFeature.get()) != nullptr, hasMemory) << row.name;
    }
}
