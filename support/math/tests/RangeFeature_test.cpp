#include <murvane/infra/ParameterTrie.h>
#include <murvane/math/RangeFeature.h>
#include <testkit/LogRecorder.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <log4cplus/loglevel.h>

#include <limits>
#include <memory>

using namespace Zantrix;
using namespace Zantrix::Math;
using testing::ElementsAre;
using testing::IsEmpty;
using testkit::LogRecord;
using testkit::LogRecorder;

namespace {

LogRecord warning(const std::string& message) {
    return {"murvane.math.RangeFeature", log4cplus::WARN_LOG_LEVEL, message, "RangeFeature"};
}

TEST(RangeFeature, AppendsTheSlice) {
    RangeFeature feature(1, 2);
    DoubleVector out{9.0};
    EXPECT_TRUE(feature.compute({1.0, 2.0, 3.0, 4.0}, out));
    EXPECT_THAT(out, ElementsAre(9.0, 2.0, 3.0));
}

TEST(RangeFeature, AppendsNothingWhenTheSliceDoesNotLieWithinTheInput) {
    DoubleVector out{9.0};
    const DoubleVector in{1.0, 2.0, 3.0};
    constexpr std::size_t huge = std::numeric_limits<std::size_t>::max();
    for (const auto& [start, length] : std::vector<std::pair<std::size_t, std::size_t>>{
             {2, 2}, {0, 4}, {3, 1}, {4, 0}, {huge, 1}, {1, huge}, {huge, huge}, {huge, 2}}) {
        RangeFeature feature(start, length);
        EXPECT_FALSE(feature.compute(in, out)) << start << ' ' << length;
    }
    EXPECT_THAT(out, ElementsAre(9.0));
}

TEST(RangeFeature, TheWholeInputAndTheEmptySliceAtItsEndLieWithin) {
    const DoubleVector in{1.0, 2.0, 3.0};
    DoubleVector out;
    EXPECT_TRUE(RangeFeature(3, 0).compute(in, out));
    EXPECT_TRUE(RangeFeature().compute(in, out));
    EXPECT_TRUE(RangeFeature().compute({}, out));
    EXPECT_THAT(out, IsEmpty());
    EXPECT_TRUE(RangeFeature(0, 3).compute(in, out));
    EXPECT_EQ(out, in);
}

TEST(RangeFeature, AppendsACopyWhenInputAndOutputAreOne) {
    RangeFeature feature(1, 2);
    DoubleVector both{1.0, 2.0, 3.0};
    both.shrink_to_fit();
    EXPECT_TRUE(feature.compute(both, both));
    EXPECT_THAT(both, ElementsAre(1.0, 2.0, 3.0, 2.0, 3.0));
}

TEST(RangeFeature, ReadsItsSliceFromTheConfiguration) {
    ParameterTrie config;
    config.setIntParameter("range.startIndex", 2);
    config.setIntParameter("range.length", 1);
    const LogRecorder log;
    RangeFeature feature;
    EXPECT_TRUE(feature.configure(config));
    DoubleVector out;
    EXPECT_TRUE(feature.compute({1.0, 2.0, 3.0}, out));
    EXPECT_THAT(out, ElementsAre(3.0));
    EXPECT_THAT(log.records(), IsEmpty());
}

TEST(RangeFeature, KeepsItsSliceWhenTheConfigurationLacksAPart) {
    ParameterTrie config;
    config.setIntParameter("range.startIndex", 2);
    const LogRecorder log;
    RangeFeature feature(0, 2);
    EXPECT_FALSE(feature.configure(config));
    EXPECT_FALSE(feature.configure(ParameterTrie()));
    config.setIntParameter("range.length", -1);
    EXPECT_FALSE(feature.configure(config));
    DoubleVector out;
    EXPECT_TRUE(feature.compute({1.0, 2.0, 3.0}, out));
    EXPECT_THAT(out, ElementsAre(1.0, 2.0));
    EXPECT_THAT(log.records(), ElementsAre(warning("Could not find parameter range.length in configuration"),
                                           warning("Could not find parameter range.startIndex in configuration"),
                                           warning("Invalid value in parameter range.length")));
}

TEST(RangeFeature, AnAbsentParameterIsAWarningAndLeavesTheValue) {
    const LogRecorder log;
    unsigned int value = 77;
    EXPECT_FALSE(RangeFeature::extractConfigParam(ParameterTrie(), "spectralrange.widthHz", value));
    EXPECT_EQ(value, 77u);
    EXPECT_THAT(log.records(), ElementsAre(warning("Could not find parameter spectralrange.widthHz in configuration")));
}

TEST(RangeFeature, ReadsOneUnsignedParameter) {
    ParameterTrie config;
    config.setIntParameter("zero", 0);
    config.setIntParameter("largest", std::numeric_limits<int>::max());
    config.setIntParameter("negative", -5);
    config.setStringParameter("word", "wide");
    const LogRecorder log(log4cplus::ERROR_LOG_LEVEL);
    unsigned int value = 77;
    EXPECT_FALSE(RangeFeature::extractConfigParam(config, "negative", value));
    EXPECT_FALSE(RangeFeature::extractConfigParam(config, "word", value));
    EXPECT_EQ(value, 77u);
    EXPECT_TRUE(RangeFeature::extractConfigParam(config, "zero", value));
    EXPECT_EQ(value, 0u);
    EXPECT_TRUE(RangeFeature::extractConfigParam(config, "largest", value));
    EXPECT_EQ(value, 2147483647u);
    EXPECT_THAT(log.records(), IsEmpty());
}

TEST(RangeFeature, CloneHasTheSameSlice) {
    const RangeFeature feature(1, 1);
    const std::unique_ptr<Cloneable> pClone(feature.clone());
    auto* pRange = dynamic_cast<RangeFeature*>(pClone.get());
    ASSERT_NE(pRange, nullptr);
    DoubleVector out;
    EXPECT_TRUE(pRange->compute({1.0, 2.0}, out));
    EXPECT_THAT(out, ElementsAre(2.0));
}

}  // namespace
