// What names, lists and labels mean is the same in a program that runs in another locale.
#include "AnnotationBuilderFixture.h"

#include <murvane/audio.h>
#include <testkit/ForeignLocale.h>
#include <testkit/LogRecorder.h>
#include <testkit/SameBits.h>
#include <testkit/WavFixture.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <memory>
#include <sstream>
#include <string>
#include <vector>

namespace {

using namespace Zantrix;
using namespace Zantrix::Audio;
using namespace annotation_builder_test;
using Math::DoubleVector;
using testkit::ForeignLocale;
using testkit::LogRecorder;

ParameterTrie parameter(const char* key, const std::string& value) {
    ParameterTrie config;
    config.setStringParameter(key, value.c_str());
    return config;
}

/// What a feature by name gives for a window of noise.
DoubleVector values(const std::string& name) {
    AudioFeatureFactory factory;
    const std::unique_ptr<Math::SignalFeature> pFeature(factory.getNewFeature(name.c_str()));
    DoubleVector out;
    EXPECT_TRUE(pFeature != nullptr) << name;
    if (pFeature != nullptr) {
        const std::vector<double> noise = testkit::noise(256, 1);
        DoubleVector in;
        in.assign(noise.begin(), noise.end());
        EXPECT_TRUE(pFeature->compute(in, out)) << name;
    }
    return out;
}

TEST(LocaleIndependence, NamesOfFeaturesIgnoreTheCaseOfTheSameLetters) {
    const ForeignLocale locale;
    EXPECT_TRUE(AudioFeature::parseFeatureType("silenceratio").isValid());
    EXPECT_FALSE(AudioFeature::parseFeatureType("s\xfdlenceratio").isValid());
    EXPECT_EQ(std::unique_ptr<Math::SignalFeature>(AudioFeatureFactory().getNewBaseFeature("s\xddlenceratio")),
              nullptr);
    Math::MathSignalFeatureFactory math;
    EXPECT_NE(std::unique_ptr<Math::SignalFeature>(math.getNewBaseFeature("slidingwindow(3)")), nullptr);
}

TEST(LocaleIndependence, NumbersInNamesAreTheSame) {
    const LogRecorder log;
    const DoubleVector expected = values("SPECTRALRANGE(1000,20)_SPECTRUM");
    const ForeignLocale locale;
    EXPECT_TRUE(testkit::sameBits(values("SPECTRALRANGE(1000,20)_SPECTRUM"), expected));
    EXPECT_TRUE(testkit::sameBits(values("SPECTRALRANGE(1000.999,20.555)_SPECTRUM"), expected))
        << "a point ends a number here, and separates thousands there";
}

TEST(LocaleIndependence, ListsAreSplitAtTheSameBlanks) {
    const ForeignLocale locale;
    LogRecorder log(log4cplus::ERROR_LOG_LEVEL);
    MaxSpectralRangesFeature ranges;
    EXPECT_TRUE(ranges.configure(parameter("maxspectralranges.frequenciesList", "1000 440")));
    EXPECT_FALSE(ranges.configure(parameter("maxspectralranges.frequenciesList",
                                            "350\xa0"
                                            "440")));
    FeatureComputerWithInputsImpl computer;
    EXPECT_TRUE(computer.configure(parameter("featurecomputer.featuresList", "MEAN silenceratio")));
    EXPECT_FALSE(computer.configure(parameter("featurecomputer.featuresList", "MEAN\xa0MEAN")));
    EXPECT_EQ(log.records().at(0).message,
              "Could not convert string atom 350\xa0"
              "440in an integer");
    EXPECT_EQ(log.records().back().message, "Unknown feature MEAN\xa0MEAN in parameter featurecomputer.featuresList");
}

TEST(LocaleIndependence, LogRecordsWriteNumbersTheSame) {
    const ForeignLocale locale;
    const LogRecorder log;
    values("SPECTRALRANGE(1000,20)_SPECTRUM");
    std::string messages;
    for (const testkit::LogRecord& record : log.records()) {
        messages += record.message + '\n';
    }
    EXPECT_THAT(messages, testing::HasSubstr("center freq = 1000 Hz, width = 20"));
}

TEST(LocaleIndependence, LabelsOfTonesReadTheSame) {
    const ForeignLocale locale;
    SingleFrequencyAnnotationImpl single;
    EXPECT_TRUE(single.setLabel("SF_1.000"));
    EXPECT_EQ(single.getFrequency(), 1);
    EXPECT_FALSE(
        single.setLabel("SF_\xa0"
                        "1000"));
    single.setFrequency(-1234567);
    EXPECT_EQ(single.getLabel(), "SF_-1234567");
    AmplitudeModulatedAnnotationImpl modulated;
    EXPECT_TRUE(modulated.setLabel("AM_1000x2000"));
    modulated.setModulatedFreq(3000000);
    EXPECT_EQ(modulated.getLabel(), "AM_1000x3000000");
    EXPECT_EQ(modulated.getCarrierFreq(), 1000u);
}

TEST(LocaleIndependence, LabelsFindTheSameTypes) {
    AnnotationBuilder builder;
    EXPECT_TRUE(builder.registerPrototype(Prototype("Tritone", "SIT_[0-9]+")));
    EXPECT_TRUE(builder.registerPrototype(SingleFrequencyAnnotationImpl()));
    const ForeignLocale locale;
    EXPECT_EQ(madeFrom(builder, "sit_3"), "Tritone sit_3");
    EXPECT_EQ(madeFrom(builder, "s\xfdt_3"), "AnnotationImpl s\xfdt_3");
    EXPECT_EQ(madeFrom(builder, "SF_1000"), "SingleFrequency SF_1000");
}

TEST(LocaleIndependence, LabelsCompareTheSame) {
    const ForeignLocale locale;
    AnnotationImpl annotation;
    EXPECT_TRUE(annotation.setLabel("SIT i"));
    EXPECT_TRUE(annotation.isEqual("sit I"));
    EXPECT_FALSE(annotation.isEqual("s\xfdt i"));
    EXPECT_FALSE(annotation.isEqual("S\xddT I"));
}

TEST(LocaleIndependence, AnnotationsPrintAsTheirStreamFormats) {
    AnnotationImpl annotation;
    annotation.setStartTime(1234.5);
    std::ostringstream os;
    const ForeignLocale locale;
    os << annotation;
    std::ostringstream foreign;
    foreign << annotation;
    EXPECT_EQ(os.str(), "SF_MIN start=1234.5s stop=0s");
    EXPECT_EQ(foreign.str(), "SF_MIN start=1.234,5s stop=0s") << "the stream's formatting, which is its owner's";
}

}  // namespace
