#include "WindowerFixture.h"

#include <murvane/core/MemAccount.h>

#include <cmath>

namespace {

using namespace windower_test;

// --- DC offset ---

TEST(LinearAudioWindowerDCOffset, TurnsAConstantWindowIntoZeros) {
    for (const double value : {0.25, -0.75}) {
        LinearAudioWindower windower = configured(config(8000, 16, 0, true));
        push(windower, constant(256, value));
        DoubleVector window;
        for (int i = 0; i < 2; ++i) {
            ASSERT_TRUE(windower.popWindow(window));
            EXPECT_EQ(window.size(), 128u);
            EXPECT_THAT(window, Each(0.0));
        }
    }
}

TEST(LinearAudioWindowerDCOffset, IsTheMeanOfTheSignedMeansSinceTheReset) {
    LinearAudioWindower windower = configured(config(1000, 2, 0, true));
    push(windower, {1.0, 3.0, -4.0, -4.0, 1.0, 2.0});
    DoubleVector window;
    ASSERT_TRUE(windower.popWindow(window));
    EXPECT_THAT(window, ElementsAre(-1.0, 1.0));  // less 2
    ASSERT_TRUE(windower.popWindow(window));
    EXPECT_THAT(window, ElementsAre(-3.0, -3.0));  // less (2 - 4) / 2
    ASSERT_TRUE(windower.popWindow(window));
    EXPECT_DOUBLE_EQ(window[0], 1.0 - (2.0 - 4.0 + 1.5) / 3.0);
    EXPECT_DOUBLE_EQ(window[1], 2.0 - (2.0 - 4.0 + 1.5) / 3.0);

    ASSERT_TRUE(windower.reset());
    push(windower, {5.0, 5.0});
    ASSERT_TRUE(windower.popWindow(window));
    EXPECT_THAT(window, Each(0.0)) << "the estimate was forgotten";
}

TEST(LinearAudioWindowerDCOffset, IsTakenFromTheOverlappingSamplesAsTheyWerePushed) {
    LinearAudioWindower windower = configured(config(1000, 2, 1, true));
    push(windower, {0.0, 2.0, 6.0});
    DoubleVector window;
    ASSERT_TRUE(windower.popWindow(window));
    EXPECT_THAT(window, ElementsAre(-1.0, 1.0));
    ASSERT_TRUE(windower.popWindow(window));
    EXPECT_THAT(window, ElementsAre(-0.5, 3.5));  // 2 and 6 less (1 + 4) / 2
}

TEST(LinearAudioWindowerDCOffset, IsNotEstimatedWhileSuppressionIsOff) {
    LinearAudioWindower windower = configured(config(1000, 2, 0, false));
    push(windower, {8.0, 8.0, 1.0, 1.0});
    DoubleVector window;
    ASSERT_TRUE(windower.popWindow(window));
    EXPECT_THAT(window, Each(8.0));
    ASSERT_TRUE(windower.configure(config(1000, 2, 0, true)));
    ASSERT_TRUE(windower.popWindow(window));
    EXPECT_THAT(window, Each(0.0)) << "the first window did not count";
}

TEST(LinearAudioWindowerDCOffset, SurvivesAnotherConfiguration) {
    LinearAudioWindower windower = configured(config(1000, 2, 0, true));
    push(windower, {2.0, 2.0, 4.0});
    DoubleVector window;
    ASSERT_TRUE(windower.popWindow(window));
    ASSERT_TRUE(windower.configure(config(1000, 1, 0, true)));
    ASSERT_TRUE(windower.popWindow(window));
    EXPECT_THAT(window, ElementsAre(1.0)) << "4 less (2 + 4) / 2";
}

TEST(LinearAudioWindowerDCOffset, OfANanIsNan) {
    LinearAudioWindower windower = configured(config(1000, 2, 0, true));
    push(windower, {std::nan(""), 1.0});
    DoubleVector window;
    ASSERT_TRUE(windower.popWindow(window));
    ASSERT_EQ(window.size(), 2u);
    EXPECT_TRUE(std::isnan(window[0]));
    EXPECT_TRUE(std::isnan(window[1]));
    ASSERT_TRUE(windower.reset());
    push(windower, {1.0, 1.0});
    ASSERT_TRUE(windower.popWindow(window));
    EXPECT_THAT(window, Each(0.0)) << "a reset heals it";
}

// --- copies ---

TEST(LinearAudioWindowerCopy, IsConfiguredAlikeAndFreshlyReset) {
    LinearAudioWindower source = configured(config(8000, 16, 6));
    push(source, ramp(300));
    DoubleVector window;
    ASSERT_TRUE(source.popWindow(window));

    LinearAudioWindower copy(source);
    EXPECT_EQ(copy.getConfig().m_uiWindowOverlapMs, 6u);
    EXPECT_EQ(copy.getCurrentAudioTime(), 0.0);
    EXPECT_EQ(copy.getTotalPushedAudioTime(), 0.0);
    EXPECT_FALSE(copy.popWindow(window));
    push(copy, ramp(208, 50.0));
    ASSERT_TRUE(copy.popWindow(window));
    EXPECT_EQ(copy.getCurrentAudioTime(), 0.016);
    ASSERT_TRUE(copy.popWindow(window));
    EXPECT_THAT(window, ElementsAreArray(ramp(128, 130.0)));

    ASSERT_TRUE(source.popWindow(window));
    EXPECT_THAT(window, ElementsAreArray(ramp(128, 80.0))) << "the source goes on where it was";
    EXPECT_DOUBLE_EQ(source.getCurrentAudioTime(), 0.026);
}

TEST(LinearAudioWindowerCopy, EstimatesTheDCOffsetByItself) {
    LinearAudioWindower source = configured(config(1000, 1, 0, true));
    push(source, {10.0, 2.0});
    DoubleVector window;
    ASSERT_TRUE(source.popWindow(window));
    LinearAudioWindower copy(source);
    push(copy, {4.0});
    ASSERT_TRUE(copy.popWindow(window));
    EXPECT_THAT(window, ElementsAre(0.0));
    ASSERT_TRUE(source.popWindow(window));
    EXPECT_THAT(window, ElementsAre(-4.0)) << "2 less (10 + 2) / 2: making the copy has not reset the source";
}

TEST(LinearAudioWindowerCopy, OfAnUnconfiguredOneIsUnconfigured) {
    const LinearAudioWindower source;
    LinearAudioWindower copy(source);
    push(copy, ramp(200));
    DoubleVector window;
    EXPECT_FALSE(copy.popWindow(window));
}

TEST(LinearAudioWindowerAssignment, TakesEverythingOver) {
    LinearAudioWindower source = configured(config(8000, 16, 6));
    push(source, ramp(300));
    DoubleVector window;
    ASSERT_TRUE(source.popWindow(window));

    LinearAudioWindower target = configured(Config());
    push(target, ramp(10));
    target = source;
    EXPECT_EQ(target.getConfig().m_uiWindowOverlapMs, 6u);
    EXPECT_EQ(target.getCurrentAudioTime(), 0.016);
    EXPECT_EQ(target.getTotalPushedAudioTime(), 300.0 / 8000.0);
    ASSERT_TRUE(target.popWindow(window));
    EXPECT_THAT(window, ElementsAreArray(ramp(128, 80.0)));
    EXPECT_DOUBLE_EQ(target.getCurrentAudioTime(), 0.026) << "not the first window";
    ASSERT_TRUE(source.popWindow(window));
    EXPECT_THAT(window, ElementsAreArray(ramp(128, 80.0))) << "each has its own queue";
}

TEST(LinearAudioWindowerAssignment, TakesTheFirstWindowFlagOver) {
    const LinearAudioWindower source = configured(config(8000, 16, 6));
    LinearAudioWindower target = configured(config(8000, 16, 6));
    push(target, ramp(128));
    DoubleVector window;
    ASSERT_TRUE(target.popWindow(window));
    target = source;
    push(target, ramp(128));
    ASSERT_TRUE(target.popWindow(window));
    EXPECT_EQ(target.getCurrentAudioTime(), 0.016);
}

TEST(LinearAudioWindowerAssignment, SharesTheEstimator) {
    LinearAudioWindower target = configured(config(1000, 1, 0, true));
    DoubleVector window;
    {
        LinearAudioWindower source = configured(config(1000, 1, 0, true));
        push(source, {10.0});
        target = source;
        ASSERT_TRUE(source.popWindow(window));
        ASSERT_TRUE(target.popWindow(window));
        EXPECT_THAT(window, ElementsAre(0.0));
        push(target, {4.0});
        ASSERT_TRUE(target.popWindow(window));
        EXPECT_THAT(window, ElementsAre(-4.0)) << "4 less (10 + 10 + 4) / 3";
    }
    push(target, {0.0});
    ASSERT_TRUE(target.popWindow(window));
    EXPECT_THAT(window, ElementsAre(-6.0)) << "the estimator outlives the source";
}

TEST(LinearAudioWindowerAssignment, ToItselfChangesNothing) {
    LinearAudioWindower windower = configured(config(1000, 1, 0, true));
    push(windower, {10.0, 2.0});
    DoubleVector window;
    ASSERT_TRUE(windower.popWindow(window));
    LinearAudioWindower& same = windower;
    windower = same;
    ASSERT_TRUE(windower.popWindow(window));
    EXPECT_THAT(window, ElementsAre(-4.0));
    EXPECT_DOUBLE_EQ(windower.getCurrentAudioTime(), 0.002);
}

TEST(LinearAudioWindowerAssignment, CountsTheHoldersOfAnEstimatorInItsAccount) {
    const Zantrix::MemAccount& account = Zantrix::MemAccount::named("ReferenceCount");
    const std::int64_t before = account.live();
    {
        LinearAudioWindower source;
        const LinearAudioWindower copy(source);
        LinearAudioWindower target;
        EXPECT_EQ(account.live(), before + 3);
        target = source;
        EXPECT_EQ(account.live(), before + 2) << "the target's own estimator has lost its last holder";
    }
    EXPECT_EQ(account.live(), before);
}

// --- an estimator that fails: none can be given to a windower, so the test puts one in ---

using EstimatorHandle = RefCountedObjPtr<SignalFeatureWithMemory>;

struct EstimatorOf {
    friend EstimatorHandle LinearAudioWindower::*member(EstimatorOf);
};

template <EstimatorHandle LinearAudioWindower::*Member>
struct Expose {
    friend EstimatorHandle LinearAudioWindower::*member(EstimatorOf) { return Member; }
};

template struct Expose<&LinearAudioWindower::m_pFeatureDCOffset>;

EstimatorHandle& estimatorOf(LinearAudioWindower& windower) {
    return windower.*member(EstimatorOf());
}

/// Appends so many values, or fails.
class Estimator : public virtual SignalFeatureWithMemory {
public:
    Estimator(bool works, std::size_t values) : m_works(works), m_values(values) {}

    bool compute(const DoubleVector&, DoubleVector& out) override {
        out.resize(out.size() + m_values, 1.0);
        return m_works;
    }
    bool reset() override { return m_works; }
    Zantrix::Cloneable* clone() const override { return new Estimator(*this); }

private:
    bool m_works;
    std::size_t m_values;
};

/// Pops once, after which everything but the window must be as it was.
void expectPopFails(LinearAudioWindower& windower, const LogRecords& expected) {
    push(windower, {3.0, 4.0, 5.0});
    DoubleVector window;
    LogRecorder log;
    EXPECT_FALSE(windower.popWindow(window));
    EXPECT_EQ(log.records(), expected);
    EXPECT_THAT(window, ElementsAre(3.0, 4.0)) << "the window keeps the samples uncorrected";
    EXPECT_EQ(windower.getCurrentAudioTime(), 0.0);

    ASSERT_TRUE(windower.configure(config(1000, 2, 0, false)));
    EXPECT_TRUE(windower.popWindow(window));
    EXPECT_THAT(window, ElementsAre(3.0, 4.0)) << "nothing was consumed";
    EXPECT_EQ(windower.getCurrentAudioTime(), 0.002) << "and the next window is the first";
}

TEST(LinearAudioWindowerEstimator, IsMissedByPopAndReset) {
    LinearAudioWindower windower = configured(config(1000, 2, 0, true));
    estimatorOf(windower) = EstimatorHandle();
    expectPopFails(windower, {failedAssertion("!m_pFeatureDCOffset.isNull()", c_szSource, 189)});

    LogRecorder log;
    push(windower, ramp(5));
    EXPECT_FALSE(windower.reset());
    EXPECT_EQ(log.records(), LogRecords{failedAssertion("!m_pFeatureDCOffset.isNull()", c_szSource, 149)});
    EXPECT_EQ(windower.getCurrentAudioTime(), 0.0);
    EXPECT_EQ(windower.getTotalPushedAudioTime(), 0.0);
    DoubleVector window;
    EXPECT_FALSE(windower.popWindow(window)) << "the rest was reset all the same";
}

TEST(LinearAudioWindowerEstimator, FailsSilently) {
    LinearAudioWindower windower = configured(config(1000, 2, 0, true));
    estimatorOf(windower) = EstimatorHandle(new Estimator(false, 1));
    expectPopFails(windower, {});
    EXPECT_FALSE(windower.reset()) << "the estimator's result";
}

TEST(LinearAudioWindowerEstimator, MustYieldOneValue) {
    for (const std::size_t values : {0u, 2u}) {
        LinearAudioWindower windower = configured(config(1000, 2, 0, true));
        estimatorOf(windower) = EstimatorHandle(new Estimator(true, values));
        expectPopFails(windower, {failedAssertion("m_vScratch.size() == 1", c_szSource, 195)});
    }
}

TEST(LinearAudioWindowerEstimator, BeginsEachTimeWithAnEmptyScratch) {
    LinearAudioWindower windower = configured(config(1000, 2, 0, true));
    estimatorOf(windower) = EstimatorHandle(new Estimator(true, 1));
    push(windower, {3.0, 4.0, 5.0, 6.0});
    DoubleVector window;
    EXPECT_TRUE(windower.popWindow(window));
    EXPECT_THAT(window, ElementsAre(2.0, 3.0));
    EXPECT_TRUE(windower.popWindow(window));
    EXPECT_THAT(window, ElementsAre(4.0, 5.0));
}

// --- records ---

TEST(LinearAudioWindowerLog, TracesTheFourOperations) {
    LinearAudioWindower windower;
    LogRecorder log(log4cplus::TRACE_LOG_LEVEL);
    EXPECT_TRUE(windower.configure(Config()));
    EXPECT_EQ(log.take(), traced("configure"));
    EXPECT_FALSE(windower.configure(config(8000, 16, 16)));
    EXPECT_EQ(log.take(), traced("configure"));
    const double sample = 0.0;
    EXPECT_TRUE(windower.pushLinearAudio(&sample, &sample + 1));
    EXPECT_EQ(log.take(), traced("pushLinearAudio"));
    DoubleVector window;
    EXPECT_FALSE(windower.popWindow(window));
    EXPECT_EQ(log.take(), traced("popWindow"));
    EXPECT_GT(windower.getTotalPushedAudioTime(), 0.0);
    EXPECT_EQ(log.take(), traced("getTotalPushedAudioTime"));
}

TEST(LinearAudioWindowerLog, DoesNotTraceTheOthers) {
    LinearAudioWindower windower;
    LogRecorder log(log4cplus::TRACE_LOG_LEVEL);
    EXPECT_TRUE(windower.reset());
    EXPECT_TRUE(windower.setCurrentAudioTime(1.0));
    EXPECT_EQ(windower.getCurrentAudioTime(), 1.0);
    EXPECT_EQ(windower.getConfig().m_uiSampleRate, 8000u);
    EXPECT_THAT(log.records(), IsEmpty());
}

TEST(LinearAudioWindowerLog, TracesAFailedPopAroundItsAssertion) {
    LinearAudioWindower windower = configured(config(1000, 1, 0, true));
    estimatorOf(windower) = EstimatorHandle();
    push(windower, {1.0});
    LogRecorder log(log4cplus::TRACE_LOG_LEVEL);
    DoubleVector window;
    EXPECT_FALSE(windower.popWindow(window));
    EXPECT_EQ(log.records(), traced("popWindow", {failedAssertion("!m_pFeatureDCOffset.isNull()", c_szSource, 189)}));
}

TEST(LinearAudioWindowerLog, FollowsTheLevelOfItsCategoryFromOperationToOperation) {
    LinearAudioWindower windower = configured(Config());
    DoubleVector window;
    {
        LogRecorder log(log4cplus::DEBUG_LOG_LEVEL);
        EXPECT_FALSE(windower.popWindow(window));
        EXPECT_THAT(log.records(), IsEmpty());
    }
    {
        LogRecorder log(log4cplus::TRACE_LOG_LEVEL, c_szCategory);
        EXPECT_FALSE(windower.popWindow(window));
        EXPECT_EQ(log.records(), traced("popWindow"));
    }
}

}  // namespace
