#include <murvane/audio/input/AudioSignalWindow.h>
#include <testkit/LogRecorder.h>
#include <testkit/TraceRecords.h>

#include <gmock/gmock.h>

#include <bit>
#include <cmath>
#include <cstdint>
#include <limits>
#include <memory>

namespace {

using testing::DoubleNear;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;
using testkit::failedAssertion;
using testkit::LogRecorder;
using testkit::LogRecords;
using Zantrix::Audio::HannWindow;
using Zantrix::Audio::SignalWindow;
using Zantrix::Audio::SignalWindowImpl;

const testkit::LogRecord c_outOfRange = failedAssertion("in_uiSampleIndex < m_uiWindowSize", "AudioSignalWindow", 75);

/// The base by itself, as a shape sees it.
struct Rectangle : SignalWindowImpl {
    explicit Rectangle(std::size_t size) : SignalWindowImpl(size) {}
    Zantrix::Cloneable* clone() const override { return new Rectangle(*this); }
};

TEST(SignalWindowImpl, WeighsEverySampleByOne) {
    const Rectangle window(3);
    EXPECT_THAT(window.getWeights(), ElementsAre(1.0, 1.0, 1.0));
    EXPECT_EQ(window.getSize(), 3.0);
    EXPECT_EQ(window.getWeight(2), 1.0);
}

TEST(HannWindow, OfNoSampleHasNoWeight) {
    const HannWindow window(0);
    EXPECT_THAT(window.getWeights(), IsEmpty());
    EXPECT_EQ(window.getSize(), 0.0);
    LogRecorder log(log4cplus::TRACE_LOG_LEVEL);
    EXPECT_EQ(window.getWeight(0), 1.0);
    EXPECT_EQ(window.getWeight(5), 1.0);
    EXPECT_EQ(log.records(), (LogRecords{c_outOfRange, c_outOfRange}));
}

TEST(HannWindow, OfOneSampleWeighsItNan) {
    const HannWindow window(1);
    ASSERT_THAT(window.getWeights(), SizeIs(1));
    LogRecorder log;
    EXPECT_TRUE(std::isnan(window.getWeight(0)));
    EXPECT_THAT(log.records(), IsEmpty());
}

TEST(HannWindow, OfTwoSamplesIsZero) {
    EXPECT_THAT(HannWindow(2).getWeights(), ElementsAre(0.0, 0.0));
}

TEST(HannWindow, OfFiveSamplesRisesToOneInTheMiddle) {
    const HannWindow window(5);
    EXPECT_THAT(window.getWeights(), ElementsAre(0.0, DoubleNear(0.5, 1e-15), 1.0, DoubleNear(0.5, 1e-15), 0.0));
    EXPECT_EQ(window.getSize(), 5.0);
}

TEST(HannWindow, OfAnEvenSizeIsSymmetricAndNeverOne) {
    const HannWindow window(128);
    EXPECT_EQ(window.getWeight(0), 0.0);
    EXPECT_EQ(window.getWeight(127), 0.0);
    for (std::size_t i = 0; i < 128; ++i) {
        EXPECT_NEAR(window.getWeight(i), window.getWeight(127 - i), 5e-16);
        EXPECT_LT(window.getWeight(i), 1.0);
    }
}

TEST(HannWindow, FollowsItsFormulaInTheOrderOfItsOperations) {
    for (const std::size_t size : {3u, 128u, 255u, 256u, 1000u}) {
        const HannWindow window(size);
        ASSERT_THAT(window.getWeights(), SizeIs(size));
        for (std::size_t i = 0; i < size; ++i) {
            // volatile: each step rounded by itself, whatever the compiler knows.
            volatile double phase = static_cast<double>(i) * 6.283185307179586;
            phase = phase / static_cast<double>(size - 1);
            const double weight = (1.0 - std::cos(phase)) * 0.5;
            ASSERT_EQ(std::bit_cast<std::uint64_t>(window.getWeight(i)), std::bit_cast<std::uint64_t>(weight))
                << i << " of " << size;
            ASSERT_EQ(&window.getWeights()[0], &window.getWeights()[0]);
        }
        if (size % 2 == 1) {
            EXPECT_EQ(window.getWeight(size / 2), 1.0);
        }
    }
}

TEST(HannWindow, LeavesASampleOutOfRangeUnweighted) {
    const HannWindow window(128);
    LogRecorder log(log4cplus::TRACE_LOG_LEVEL);
    EXPECT_EQ(window.getWeight(127), 0.0);
    EXPECT_THAT(log.records(), IsEmpty());
    EXPECT_EQ(window.getWeight(128), 1.0);
    EXPECT_EQ(log.take(), LogRecords{c_outOfRange});
    EXPECT_EQ(window.getWeight(std::numeric_limits<std::size_t>::max()), 1.0);
    EXPECT_EQ(log.take(), LogRecords{c_outOfRange});
}

TEST(HannWindow, ClonesWithoutLosingABit) {
    auto pWindow = std::make_unique<HannWindow>(100);
    const std::vector<double> weights = pWindow->getWeights();
    const std::unique_ptr<Zantrix::Cloneable> pClone(pWindow->clone());
    pWindow.reset();
    const auto* pHann = dynamic_cast<const HannWindow*>(pClone.get());
    ASSERT_NE(pHann, nullptr);
    EXPECT_EQ(pHann->getSize(), 100.0);
    EXPECT_EQ(pHann->getWeights(), weights);
}

TEST(HannWindow, CopiesItsWholeTable) {
    const HannWindow source(5);
    const HannWindow copy(source);
    EXPECT_EQ(copy.getWeights(), source.getWeights());
    EXPECT_NE(copy.getWeights().data(), source.getWeights().data());
    HannWindow target(128);
    target = source;
    EXPECT_EQ(target.getSize(), 5.0);
    EXPECT_EQ(target.getWeights(), source.getWeights());
    LogRecorder log;
    EXPECT_EQ(target.getWeight(5), 1.0);
    EXPECT_EQ(log.records(), LogRecords{c_outOfRange});
}

TEST(HannWindow, AnswersThroughItsInterface) {
    const HannWindow hann(5);
    const SignalWindow& window = hann;
    EXPECT_EQ(window.getSize(), 5.0);
    EXPECT_EQ(window.getWeight(2), 1.0);
    EXPECT_THAT(window.getWeights(), SizeIs(5));
}

}  // namespace
