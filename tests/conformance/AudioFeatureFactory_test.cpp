#include <murvane/audio.h>
#include <murvane/core/MemAccount.h>
#include <testkit/LogRecorder.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <log4cplus/loglevel.h>

#include <algorithm>
#include <cctype>
#include <memory>
#include <string>
#include <thread>
#include <typeinfo>
#include <vector>

using namespace Zantrix;
using namespace Zantrix::Audio;
using Math::SignalFeature;
using testing::ElementsAre;
using testing::IsEmpty;
using testkit::failedAssertion;
using testkit::LogRecord;
using testkit::LogRecorder;

namespace {

constexpr const char* c_szSource = "AudioFeatureFactory";
constexpr const char* c_szSplits = "splitParams(in_szFeatureName, strFeature, vParams)";
constexpr const char* c_szNone = "vParams.empty()";
constexpr const char* c_szOne = "vParams.size() == 1";
constexpr const char* c_szTwo = "vParams.size() == 2";
constexpr const char* c_szSome = "!vParams.empty()";

enum class Builds { Yes, Never };

struct Row {
    const char* name;
    Builds builds;
    std::vector<std::string> accepted;  // parameter lists
    std::vector<std::string> refused;   // parameter lists of a wrong number
    const char* rule;                   // what is asserted of the refused ones
    const std::type_info* type = nullptr;
};

const std::vector<Row>& rows() {
    static const std::vector<std::string> no{"", "()"};
    static const std::vector<std::string> some{"(1)", "(x)", "(1,2)", "(1,2,3)"};
    static const std::vector<std::string> any{"", "()", "(1)", "(1,2)", "(x)"};
    static const std::vector<Row> rows = {
        {"ENERGYHISTOGRAM", Builds::Never, any, {}, nullptr},
        {"CLIPPINGRATE", Builds::Never, any, {}, nullptr},
        {"ZEROCROSSINGRATE",
         Builds::Yes,
         {"", "()", "(0)", "(8000)"},
         {"(1,2)", "(x,y)", "(1,2,3)"},
         c_szOne,
         &typeid(ZeroCrossingRateFeature)},
        {"SPECTRUM", Builds::Yes, no, some, c_szNone, &typeid(SpectrumFeature)},
        {"SPECTRUM100HZ", Builds::Yes, no, some, c_szNone, &typeid(SpectrumReducedFeature)},
        {"SPECTRUM200HZ", Builds::Yes, no, some, c_szNone, &typeid(SpectrumReducedFeature)},
        {"SPECTRUM500HZ", Builds::Yes, no, some, c_szNone, &typeid(SpectrumReducedFeature)},
        {"FLATNESS", Builds::Yes, no, some, c_szNone, &typeid(FlatnessFeature)},
        {"SPECTRALRANGE",
         Builds::Yes,
         {"", "()", "(440,20)"},
         {"(1)", "(x)", "(1,2,3)"},
         c_szTwo,
         &typeid(SpectralRangeFeature)},
        {"MAXSPECTRALRANGES",
         Builds::Yes,
         {"(440)", "(440,480)", "(1,2,3)"},
         no,
         c_szSome,
         &typeid(MaxSpectralRangesFeature)},
        {"OLDHARMONICPRODUCT", Builds::Yes, no, some, c_szNone, &typeid(OldHarmonicProductFeature)},
        {"HARMONICPRODUCT", Builds::Yes, no, some, c_szNone, &typeid(HarmonicProductFeature)},
        {"ROBUSTHARMONICPRODUCT", Builds::Yes, no, some, c_szNone, &typeid(RobustHarmonicProductFeature)},
        {"ANTIHARMONICPRODUCT", Builds::Yes, no, some, c_szNone, &typeid(AntiHarmonicProductFeature)},
        {"SPECTRALSLOPE", Builds::Never, any, {}, nullptr},
        {"SPECTRALWEIGHTEDAREA", Builds::Yes, no, some, c_szNone, &typeid(SpectralWeightedAreaFeature)},
        {"SILENCERATIO", Builds::Yes, no, some, c_szNone, &typeid(SilenceRatioFeature)},
        {"NOISERATIO", Builds::Yes, no, some, c_szNone, &typeid(SilenceRatioFeature)},
        {"AMPLITUDEDISTRIBUTION", Builds::Yes, no, some, c_szNone, &typeid(RatiosFeature)},
        {"TEMPORALAMPLITUDEDISTRIBUTION", Builds::Yes, no, some, c_szNone, &typeid(RatiosFeature)},
        {"PEAKS", Builds::Yes, no, some, c_szNone, &typeid(PeaksFeature)},
        {"NEIGHBOURHOODOFMAX", Builds::Yes, no, some, c_szNone, &typeid(MaxNeighbourhoodFeature)},
        {"LOWFREQENERGYRATIO", Builds::Yes, no, some, c_szNone, &typeid(LowFreqEnergyRatioFeature)},
        {"LOWFREQENERGYRATIOS", Builds::Yes, no, some, c_szNone, &typeid(LowFreqEnergyRatiosFeature)},
        {"DELTATOSLIDINGMEAN", Builds::Yes, no, some, c_szNone, &typeid(DeltaToSlidingMeanFeature)},
        {"MYFEATURE", Builds::Never, any, {}, nullptr},
    };
    return rows;
}

LogRecord lookingFor(const std::string& base) {
    return {"murvane.audio.AudioFeatureFactory", log4cplus::TRACE_LOG_LEVEL, "Looking for feature: " + base,
            c_szSource};
}

std::unique_ptr<SignalFeature> built(const std::string& name) {
    return std::unique_ptr<SignalFeature>(AudioFeatureFactory().getNewBaseFeature(name.c_str()));
}

std::size_t valuesOf(const std::string& name, std::size_t samples) {
    const std::unique_ptr<SignalFeature> pFeature = built(name);
    Math::DoubleVector out;
    EXPECT_TRUE(pFeature != nullptr && pFeature->compute(Math::DoubleVector(samples, 0.5), out)) << name;
    return out.size();
}

std::string lower(std::string name) {
    std::transform(name.begin(), name.end(), name.begin(), [](unsigned char c) { return std::tolower(c); });
    return name;
}

std::string capitalised(const std::string& name) {
    return name.substr(0, 1) + lower(name.substr(1));
}

TEST(AudioFeatureFactory, KnowsExactlyTheNamesOfTheCatalogue) {
    std::vector<std::string> expected;
    for (unsigned value = 0; value <= 26; ++value) {
        if (value != 21) {
            expected.emplace_back(AudioFeature::getFeatureTypeString(static_cast<AudioFeature::FeatureType>(value)));
        }
    }
    std::vector<std::string> names;
    for (const Row& row : rows()) {
        names.emplace_back(row.name);
    }
    EXPECT_EQ(names, expected);
}

TEST(AudioFeatureFactory, BuildsANameInAnyCaseOrGivesNullSilently) {
    for (const Row& row : rows()) {
        for (const std::string& base : {std::string(row.name), lower(row.name), capitalised(row.name)}) {
            for (const std::string& params : row.accepted) {
                const LogRecorder log(log4cplus::TRACE_LOG_LEVEL);
                const std::unique_ptr<SignalFeature> pFeature = built(base + params);
                EXPECT_THAT(log.records(), ElementsAre(lookingFor(base)));
                ASSERT_EQ(pFeature != nullptr, row.builds == Builds::Yes) << base << params;
                if (pFeature != nullptr) {
                    ASSERT_NE(row.type, nullptr) << row.name;
                    const SignalFeature& feature = *pFeature;
                    EXPECT_TRUE(typeid(feature) == *row.type) << base << params;
                    EXPECT_NE(dynamic_cast<AudioFeature*>(pFeature.get()), nullptr) << row.name;
                }
            }
        }
    }
}

TEST(AudioFeatureFactory, AssertsTheNumberOfParameters) {
    for (const Row& row : rows()) {
        if (row.builds != Builds::Yes) {
            continue;
        }
        for (const std::string& params : row.refused) {
            const LogRecorder log(log4cplus::TRACE_LOG_LEVEL);
            EXPECT_EQ(built(row.name + params), nullptr) << row.name << params;
            EXPECT_THAT(log.records(), ElementsAre(lookingFor(row.name), failedAssertion(row.rule, c_szSource)))
                << row.name << params;
        }
    }
}

TEST(AudioFeatureFactory, AnUnknownNameIsLookedForAndGivesNull) {
    for (const std::string name :
         {"NOSUCH", "SPECTRU", "SPECTRUM1", " SPECTRUM", "SPECTRUM ", "NonLogPeaks", "NONLOGPEAKS", "nonlogpeaks",
          "PONDERATEDPEAKS", "MEANMAX", "MEAN", "AMPLITUDE", "FLATNESS_SPECTRUM"}) {
        const LogRecorder log(log4cplus::TRACE_LOG_LEVEL);
        EXPECT_EQ(built(name), nullptr) << name;
        EXPECT_EQ(built(name + "(1,2)"), nullptr) << name;
        EXPECT_THAT(log.records(), ElementsAre(lookingFor(name), lookingFor(name)));
    }
}

TEST(AudioFeatureFactory, TheTextOfTypesWithoutANameIsUnknown) {
    const LogRecorder log(log4cplus::TRACE_LOG_LEVEL);
    EXPECT_EQ(built("???Feature_FeatureType???"), nullptr);
    EXPECT_EQ(built("???FEATURE_FEATURETYPE???"), nullptr);
    EXPECT_THAT(log.records(),
                ElementsAre(lookingFor("???Feature_FeatureType???"), lookingFor("???FEATURE_FEATURETYPE???")));
}

TEST(AudioFeatureFactory, AMalformedNameIsAnAssertionAndNotLookedFor) {
    for (const char* name : {static_cast<const char*>(nullptr), "", "_", "SPECTRUM_", "_SPECTRUM", "FLATNESS__SPECTRUM",
                             "SPECTRUM(", "SPECTRUM)", "SPECTRUM(1", "SPECTRUM(1))", "(1)", "SPECTRUM(1)2",
                             "SPECTRUM(,)", "ZEROCROSSINGRATE(8000,)", "SPECTRUM,1"}) {
        const LogRecorder log(log4cplus::TRACE_LOG_LEVEL);
        EXPECT_EQ(AudioFeatureFactory().getNewBaseFeature(name), nullptr);
        EXPECT_THAT(log.records(), ElementsAre(failedAssertion(c_szSplits, c_szSource)))
            << (name == nullptr ? "null" : name);
    }
}

TEST(AudioFeatureFactory, ANumberIsReadAsAStreamReadsIt) {
    for (const std::string param : {"8000", "100x", "-5", "+5", "0", "007", "1.5", "1e3", "18446744073709551615",
                                    " 8000 ", "12 34", "0x1F", "8000_8000"}) {
        const LogRecorder log;
        EXPECT_NE(built("ZEROCROSSINGRATE(" + param + ")"), nullptr) << param;
        EXPECT_THAT(log.records(), IsEmpty()) << param;
    }
}

TEST(AudioFeatureFactory, AParameterThatIsNoNumberGivesNullWithoutAMessage) {
    for (const std::string param :
         {"x", "x100", ".5", "-", "+", "--5", "18446744073709551616", "1000000000000000000000", "nan", "\"8\"", "$8"}) {
        const LogRecorder log(log4cplus::TRACE_LOG_LEVEL);
        EXPECT_EQ(built("ZEROCROSSINGRATE(" + param + ")"), nullptr) << param;
        EXPECT_THAT(log.records(), ElementsAre(lookingFor("ZEROCROSSINGRATE"))) << param;
    }
}

TEST(AudioFeatureFactory, ReducedSpectraHaveTheirBands) {
    EXPECT_EQ(valuesOf("SPECTRUM", 256), 128u);
    EXPECT_EQ(valuesOf("SPECTRUM100HZ", 256), 40u);
    EXPECT_EQ(valuesOf("SPECTRUM200HZ", 256), 20u);
    EXPECT_EQ(valuesOf("SPECTRUM500HZ", 256), 8u);
}

TEST(AudioFeatureFactory, GivesANewObjectEachTime) {
    const auto pFirst = built("SPECTRUM");
    const auto pSecond = built("SPECTRUM");
    ASSERT_NE(pFirst, nullptr);
    EXPECT_NE(pFirst, pSecond);
    Math::DoubleVector out;
    EXPECT_TRUE(pFirst->compute(Math::DoubleVector(64, 1.0), out));
    EXPECT_TRUE(pSecond->compute(Math::DoubleVector(128, 1.0), out));
}

TEST(AudioFeatureFactory, TellsItsName) {
    EXPECT_STREQ(AudioFeatureFactory::sGetFactoryName(), "AudioFeatureFactory");
    EXPECT_STREQ(AudioFeatureFactory().getFactoryName(), "AudioFeatureFactory");
    EXPECT_STREQ(AudioFeatureFactory::getMemAccountName(), "SignalFeatureFactory");
}

TEST(AudioFeatureFactory, CanBeCopied) {
    const AudioFeatureFactory factory;
    AudioFeatureFactory copy(factory);
    copy = factory;
    const std::unique_ptr<SignalFeature> pFeature(copy.getNewBaseFeature("ZEROCROSSINGRATE"));
    EXPECT_NE(pFeature, nullptr);
}

TEST(AudioFeatureFactory, LivesInTheAccountOfFactories) {
    MemAccount& account = MemAccount::named("SignalFeatureFactory");
    const auto before = account.live();
    Math::SignalFeatureFactory* pFactory = new AudioFeatureFactory;
    EXPECT_EQ(account.live(), before + 1);
    delete pFactory;
    EXPECT_EQ(account.live(), before);
}

TEST(AudioFeatureFactory, FunctionsOfExpressionsComeFromTheirAccountAndOtherFeaturesDoNot) {
    MemAccount& account = MemAccount::named("FunctionAdaptor");
    for (const Row& row : rows()) {
        if (row.builds != Builds::Yes) {
            continue;
        }
        const std::string name(row.name);
        const bool isFunction = name.starts_with("SPECTRUM") || name == "FLATNESS";
        const auto before = MemAccount::snapshot();
        const auto functions = account.live();
        std::unique_ptr<SignalFeature> pFeature = built(name + row.accepted.back());
        EXPECT_EQ(account.live(), functions + (isFunction ? 1 : 0)) << name;
        // Deleted through another base, whose part begins at another address.
        std::unique_ptr<Cloneable> pClone(pFeature->clone());
        EXPECT_EQ(account.live(), functions + (isFunction ? 2 : 0)) << name;
        pFeature.reset();
        pClone.reset();
        EXPECT_EQ(account.live(), functions) << name;
        for (const auto& [accountName, live] : before) {
            EXPECT_EQ(MemAccount::named(accountName.c_str()).live(), live) << name << ' ' << accountName;
        }
    }
}

TEST(AudioFeatureFactory, ComposesWholeNames) {
    AudioFeatureFactory factory;
    const std::unique_ptr<SignalFeature> pFeature(factory.getNewFeature("ZEROCROSSINGRATE(8000)_Spectrum500Hz"));
    ASSERT_NE(pFeature, nullptr);
    EXPECT_NE(dynamic_cast<Math::SignalFeatureWithMemory*>(pFeature.get()), nullptr);
    Math::DoubleVector out;
    EXPECT_TRUE(pFeature->compute(Math::DoubleVector(256, 0.0), out));
    EXPECT_THAT(out, ElementsAre(1.0 / 8.0));
    EXPECT_EQ(factory.getNewFeature("ZEROCROSSINGRATE_NOSUCH"), nullptr);
}

TEST(AudioFeatureFactory, ServesSeveralThreads) {
    AudioFeatureFactory factory;
    std::vector<std::thread> threads;
    std::vector<int> builtByThread(4, 0);
    for (int& count : builtByThread) {
        threads.emplace_back([&] {
            for (int i = 0; i < 200; ++i) {
                const std::unique_ptr<SignalFeature> pFeature(
                    factory.getNewBaseFeature(i % 2 == 0 ? "SPECTRUM100HZ" : "ZEROCROSSINGRATE(8000)"));
                count += pFeature != nullptr ? 1 : 0;
            }
        });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    EXPECT_THAT(builtByThread, testing::Each(200));
}

}  // namespace
