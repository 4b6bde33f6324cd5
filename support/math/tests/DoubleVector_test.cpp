#include <murvane/math/DoubleVector.h>
#include <testkit/SpecialNumbers.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>

using testing::ElementsAre;
using testing::IsEmpty;
using testkit::c_dInfinity;
using testkit::c_dNaN;
using Zantrix::Math::DoubleVector;

namespace {

TEST(DoubleVector, ClearKeepsTheStorage) {
    DoubleVector values(256, 1.0);
    const double* const storage = values.data();
    values.clear();
    EXPECT_EQ(values.size(), 0u);
    values.resize(256);
    EXPECT_EQ(values.data(), storage);
}

TEST(DoubleVector, ResizeKeepsTheLeadingValuesAndFillsTheRest) {
    DoubleVector values{1.0, 2.0, 3.0};
    values.resize(5, -1.0);
    EXPECT_THAT(values, ElementsAre(1.0, 2.0, 3.0, -1.0, -1.0));
    values.resize(2);
    EXPECT_THAT(values, ElementsAre(1.0, 2.0));
    values.resize(3);
    EXPECT_THAT(values, ElementsAre(1.0, 2.0, 0.0));
}

TEST(DoubleVector, AppendAddsBehindWhatIsThere) {
    DoubleVector values{1.0};
    const double samples[] = {2.0, 3.0, 4.0};
    values.append(samples, samples + 2);
    EXPECT_THAT(values, ElementsAre(1.0, 2.0, 3.0));
    values.append(DoubleVector{5.0, 6.0});
    EXPECT_THAT(values, ElementsAre(1.0, 2.0, 3.0, 5.0, 6.0));
    values.append(DoubleVector{});
    values.append(samples, samples);
    EXPECT_THAT(values, ElementsAre(1.0, 2.0, 3.0, 5.0, 6.0));
}

TEST(DoubleVector, AverageIsTheSumInOrderDividedByTheCount) {
    EXPECT_EQ((DoubleVector{1.0, 2.0, 6.0}.average()), 3.0);
    EXPECT_EQ((DoubleVector{-0.25}.average()), -0.25);
    // From left to right 1e16 swallows the first 1.0; in any other order the sum is not 0.
    EXPECT_EQ((DoubleVector{1.0, 1e16, -1e16, 0.0}.average()), 0.0);
    EXPECT_EQ((DoubleVector{1e16, -1e16, 1.0, 0.0}.average()), 0.25);
}

TEST(DoubleVector, AverageOfNothingIsZero) {
    EXPECT_EQ(DoubleVector().average(), 0.0);
}

TEST(DoubleVector, AverageCarriesWhatIsNotANumber) {
    EXPECT_TRUE(std::isnan((DoubleVector{1.0, c_dNaN, 2.0}.average())));
    EXPECT_TRUE(std::isnan((DoubleVector{c_dInfinity, -c_dInfinity}.average())));
    EXPECT_EQ((DoubleVector{1.0, -c_dInfinity}.average()), -c_dInfinity);
}

TEST(DoubleVector, MaxElementIsTheFirstOfTheLargest) {
    DoubleVector values{1.0, 7.0, 3.0, 7.0};
    EXPECT_EQ(values.max_element() - values.begin(), 1);
    const DoubleVector& constant = values;
    EXPECT_EQ(constant.max_element() - constant.begin(), 1);
    *values.max_element() = 0.0;
    EXPECT_EQ(values.max_element() - values.begin(), 3);
}

TEST(DoubleVector, MaxElementOfNothingIsTheEnd) {
    DoubleVector values;
    EXPECT_EQ(values.max_element(), values.end());
}

TEST(DoubleVector, MinmaxElementIsTheFirstSmallestAndTheLastLargest) {
    const DoubleVector values{2.0, -1.0, 5.0, -1.0, 5.0, 2.0};
    const auto [smallest, largest] = values.minmax_element();
    EXPECT_EQ(smallest - values.begin(), 1);
    EXPECT_EQ(largest - values.begin(), 4);
    const DoubleVector nothing;
    EXPECT_EQ(nothing.minmax_element(), std::make_pair(nothing.end(), nothing.end()));
}

TEST(DoubleVector, AbsoluteValueReplacesEveryElement) {
    DoubleVector values{-1.5, 2.0, -0.0, -c_dInfinity, c_dNaN};
    EXPECT_EQ(&values.absoluteValue(), &values);
    EXPECT_EQ(values[0], 1.5);
    EXPECT_EQ(values[1], 2.0);
    EXPECT_FALSE(std::signbit(values[2]));
    EXPECT_EQ(values[3], c_dInfinity);
    EXPECT_TRUE(std::isnan(values[4]));
}

TEST(DoubleVector, ScalesInPlace) {
    DoubleVector values{1.0, -2.0, 3.0};
    values *= 0.5;
    EXPECT_THAT(values, ElementsAre(0.5, -1.0, 1.5));
    values /= 0.25;
    EXPECT_THAT(values, ElementsAre(2.0, -4.0, 6.0));
    DoubleVector nothing;
    nothing *= 2.0;
    nothing /= 0.0;
    EXPECT_THAT(nothing, IsEmpty());
}

TEST(DoubleVector, DividesElementByElementInsteadOfMultiplyingByTheReciprocal) {
    DoubleVector values{5.0};
    values /= 49.0;
    ASSERT_NE(5.0 * (1.0 / 49.0), 5.0 / 49.0);
    EXPECT_EQ(values[0], 5.0 / 49.0);
}

TEST(DoubleVector, DivisionByZeroFollowsTheRulesOfDoubles) {
    DoubleVector values{1.0, -1.0, 0.0};
    values /= 0.0;
    EXPECT_EQ(values[0], c_dInfinity);
    EXPECT_EQ(values[1], -c_dInfinity);
    EXPECT_TRUE(std::isnan(values[2]));
}

}  // namespace
