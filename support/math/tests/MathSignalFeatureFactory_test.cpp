#include <murvane/math/BasicFeatures.h>
#include <murvane/math/MathSignalFeatureFactory.h>
#include <murvane/math/RangeFeature.h>
#include <testkit/LogRecorder.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <log4cplus/loglevel.h>

#include <memory>

using namespace Zantrix::Math;
using testing::ElementsAre;
using testing::IsEmpty;

namespace {

template <class Feature>
bool builds(const char* name) {
    MathSignalFeatureFactory factory;
    const std::unique_ptr<SignalFeature> pFeature(factory.getNewBaseFeature(name));
    return dynamic_cast<Feature*>(pFeature.get()) != nullptr;
}

TEST(MathSignalFeatureFactory, BuildsItsFeaturesWithoutRegardToCase) {
    EXPECT_TRUE(builds<AmplitudeFeature>("AMPLITUDE"));
    EXPECT_TRUE(builds<AmplitudeFeature>("Amplitude()"));
    EXPECT_TRUE(builds<MeanFeature>("mean"));
    EXPECT_TRUE(builds<TemporalMeanFeature>("TemporalMean"));
    EXPECT_TRUE(builds<SlidingWindowFeature>("slidingWINDOW(3)"));
    EXPECT_TRUE(builds<RangeFeature>("Range( 1 , 2 )"));
}

TEST(MathSignalFeatureFactory, HandsTheParametersOverInOrder) {
    MathSignalFeatureFactory factory;
    DoubleVector out;
    const std::unique_ptr<SignalFeature> pRange(factory.getNewBaseFeature("RANGE(1,2)"));
    EXPECT_TRUE(pRange->compute({1.0, 2.0, 3.0, 4.0}, out));
    EXPECT_THAT(out, ElementsAre(2.0, 3.0));
    const std::unique_ptr<SignalFeature> pSliding(factory.getNewBaseFeature("SLIDINGWINDOW(1)"));
    EXPECT_TRUE(pSliding->compute({1.0, 2.0}, out));
    EXPECT_THAT(out, ElementsAre(2.0, 3.0, 2.0));
}

TEST(MathSignalFeatureFactory, GivesNullSilentlyForWhatItDoesNotBuild) {
    const testkit::LogRecorder log(log4cplus::TRACE_LOG_LEVEL);
    MathSignalFeatureFactory factory;
    for (const char* name : {static_cast<const char*>(nullptr),
                             "",
                             "SPECTRUM",
                             "MEA",
                             "MEANS",
                             " MEAN",
                             "MEAN(1)",
                             "AMPLITUDE(1)",
                             "TEMPORALMEAN(2)",
                             "SLIDINGWINDOW",
                             "SLIDINGWINDOW(1,2)",
                             "SLIDINGWINDOW(x)",
                             "SLIDINGWINDOW(2x)",
                             "SLIDINGWINDOW(-1)",
                             "SLIDINGWINDOW(1.5)",
                             "SLIDINGWINDOW(18446744073709551616)",
                             "RANGE",
                             "RANGE(1)",
                             "RANGE(1,2,3)",
                             "RANGE(1,x)",
                             "MEAN_AMPLITUDE",
                             "MEAN("}) {
        EXPECT_EQ(factory.getNewBaseFeature(name), nullptr) << (name == nullptr ? "null" : name);
    }
    EXPECT_THAT(log.records(), IsEmpty());
}

TEST(MathSignalFeatureFactory, ReadsTheLargestParameter) {
    EXPECT_TRUE(builds<SlidingWindowFeature>("SLIDINGWINDOW(18446744073709551615)"));
    EXPECT_TRUE(builds<SlidingWindowFeature>("SLIDINGWINDOW(0)"));
}

TEST(MathSignalFeatureFactory, GivesANewObjectEachTime) {
    MathSignalFeatureFactory factory;
    const std::unique_ptr<SignalFeature> pFirst(factory.getNewBaseFeature("MEAN"));
    const std::unique_ptr<SignalFeature> pSecond(factory.getNewBaseFeature("MEAN"));
    EXPECT_NE(pFirst, pSecond);
}

TEST(MathSignalFeatureFactory, TellsItsName) {
    EXPECT_STREQ(MathSignalFeatureFactory().getFactoryName(), "MathSignalFeatureFactory");
    EXPECT_STREQ(MathSignalFeatureFactory::sGetFactoryName(), "MathSignalFeatureFactory");
}

}  // namespace
