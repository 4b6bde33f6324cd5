#include "FormulaTesting.h"
#include "TestFunctions.h"

#include <testkit/AllocationCounter.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace {

using namespace Zantrix::Math::Xpr;
using formulatesting::add;
using testfunctions::DoubledFeature;
using testfunctions::DoubleVector;
using testing::ElementsAre;

// How many windows "doubled" computes when the list is evaluated over one.
std::size_t doublings(ExpressionList& list) {
    DoubleVector out;
    const std::size_t before = DoubledFeature::s_uiWindows;
    EXPECT_TRUE(list.evaluate({1.0, 2.0}, out)) << list.getError();
    return DoubledFeature::s_uiWindows - before;
}

TEST(ExpressionList, ComputesWhatOccursTwiceOnce) {
    ExpressionList list;
    add(list, "a", "doubled(x)");
    add(list, "b", "mean(doubled(x)) + doubled(x) / 2");
    add(list, "c", " ( doubled( (x) ) ) ");
    EXPECT_EQ(doublings(list), 1u);
}

TEST(ExpressionList, ComputesDifferentThingsEach) {
    ExpressionList list;
    add(list, "a", "doubled(x) + doubled(x + 1) + doubled(x + 2) + doubled(1 + x) + doubled(-x)");
    add(list, "b", "doubled(range(x, startIndex=0, length=1)) + doubled(range(x, startIndex=1, length=1))");
    add(list, "c", "doubled(scaled(x, factors=\"2\")) + doubled(scaled(x, factors=\"2\", gain=2))");
    EXPECT_EQ(doublings(list), 9u);
}

TEST(ExpressionList, SharesWhatIsComputedOfSharedValuesWithParameters) {
    ExpressionList list;
    add(list, "a", "doubled(range(x, startIndex=0, length=1) * 2 - 1)");
    add(list, "b", "doubled(range(x, startIndex=0.0, length=1e0) * 2.0 - 1)");
    EXPECT_EQ(doublings(list), 1u);
}

TEST(ExpressionList, NeverSharesAFunctionWithAMemoryNorWhatIsComputedOfIt) {
    ExpressionList list;
    add(list, "a", "doubled(previous(x))");
    add(list, "b", "doubled(previous(x)) + doubled(temporalMean(doubled(x))) + doubled(temporalMean(doubled(x)))");
    EXPECT_EQ(doublings(list), 5u);
}

TEST(ExpressionList, OccurrencesOfAFunctionWithAMemoryRememberSeparately) {
    ExpressionList list;
    add(list, "a", "previous(x) - previous(previous(x))");
    DoubleVector out;
    list.evaluate({1.0}, out);
    list.evaluate({2.0}, out);
    list.evaluate({4.0}, out);
    EXPECT_THAT(out, ElementsAre(2.0 - 1.0));
}

TEST(ExpressionList, AFormulaAddedAfterAnEvaluationSharesNothingWithThoseBefore) {
    ExpressionList list;
    add(list, "a", "doubled(x)");
    add(list, "b", "doubled(x) + 1");
    EXPECT_EQ(doublings(list), 1u);
    add(list, "c", "doubled(x) + 2");
    add(list, "d", "doubled(x) + 3");
    EXPECT_EQ(doublings(list), 2u);
}

TEST(ExpressionList, ABatchOfWindowsEqualsTheWindowsOneByOne) {
    const std::vector<DoubleVector> x = {{1.0, 2.0}, {3.0, -4.0}, {0.5, 8.0}, {6.0, 7.0}, {0.0, 0.0}};
    ExpressionList batch;
    add(batch, "a", "temporalMean(doubled(x)) / 3 - previous(x)");
    add(batch, "b", "mean(doubled(x)) * x");
    ExpressionList single(batch);

    std::vector<DoubleVector> together(x.size());
    const std::size_t batches = DoubledFeature::s_uiBatches;
    ASSERT_TRUE(batch.evaluate(x, together));
    EXPECT_EQ(DoubledFeature::s_uiBatches - batches, 1u) << "the features see the whole batch at once";
    for (std::size_t i = 0; i < x.size(); ++i) {
        DoubleVector out;
        ASSERT_TRUE(single.evaluate(x[i], out));
        EXPECT_EQ(out, together[i]) << i;
    }
}

TEST(ExpressionList, AllocatesNothingAfterTheFirstBatch) {
    const std::vector<DoubleVector> x(16, DoubleVector(256, 0.5));
    std::vector<DoubleVector> out(16);
    ExpressionList list;
    add(list, "a", "2 * doubled(x) - mean(x) / -temporalMean(x) + 1");
    add(list, "b", "range(doubled(x), startIndex=3, length=20)");
    add(list, "c", "maximum(x, -x)");
    ASSERT_TRUE(list.evaluate(x, out));
    const testkit::AllocationCounter allocations;
    for (int i = 0; i < 10; ++i) {
        list.evaluate(x, out);
        list.evaluate(Windows(x).first(3), std::span(out).first(3));
        list.evaluate(x[0], out[0]);
    }
    EXPECT_EQ(allocations.count(), 0u);
}

}  // namespace
