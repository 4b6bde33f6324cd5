#include "TestFunctions.h"

#include <murvane/core/MemAccount.h>
#include <murvane/mathxpr/UserFunctionImpl.h>
#include <testkit/LogRecorder.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <limits>
#include <memory>
#include <type_traits>

namespace {

using namespace Zantrix::Math::Xpr;
using namespace testfunctions;
using testing::ElementsAre;

static_assert(std::is_base_of_v<SingleVariableFunctionImpl, SignalFeatureFunctionAdaptorImpl>);
static_assert(std::is_base_of_v<SingleVariableFunctionImpl, SignalFeatureToFunctionAdaptorBaseImpl<PickyFeature>>);
static_assert(std::is_base_of_v<FunctionBaseImpl, UserFunctionImpl<XprMean>>);
static_assert(std::is_base_of_v<ExpressionBaseImpl, FunctionBaseImpl>);
static_assert(std::is_convertible_v<DoubledFeature*, Zantrix::Math::SignalFeature*>, "one SignalFeature, not two");

// The values of one window.
DoubleVector evaluated(FunctionAdaptor& adaptor, const DoubleVector& x) {
    const Windows argument(&x, 1);
    DoubleVector out;
    EXPECT_TRUE(adaptor.evaluate({&argument, 1}, {&out, 1}));
    return out;
}

TEST(FunctionAdaptor, DescribesAFunctionOfX) {
    const DoubledFeature doubled;
    EXPECT_STREQ(doubled.getFunctionName(), "doubled");
    EXPECT_THAT(doubled.getArgumentNames(), ElementsAre("x"));
    EXPECT_TRUE(doubled.getParameters().empty());
    EXPECT_FALSE(doubled.hasMemory());
}

TEST(FunctionAdaptor, IsAllocatedFromItsAccount) {
    EXPECT_STREQ(FunctionAdaptor::getMemAccountName(), "FunctionAdaptor");
    auto& account = Zantrix::MemAccount::named("FunctionAdaptor");
    const auto before = account.live();
    {
        const auto pFeature = std::make_unique<DoubledFeature>();
        const auto pAdaptor = std::make_unique<XprMean>();
        const std::unique_ptr<Cloneable> pClone(pFeature->clone());
        EXPECT_EQ(account.live(), before + 3);
    }
    EXPECT_EQ(account.live(), before);
}

TEST(FunctionAdaptor, EvaluatesThroughTheFeatureInBatches) {
    DoubledFeature doubled;
    const std::vector<DoubleVector> in = {{1.0, 2.0}, {}, {3.0}};
    std::vector<DoubleVector> out(3, DoubleVector{7.0});
    const Windows argument(in);
    const std::size_t batches = DoubledFeature::s_uiBatches;
    ASSERT_TRUE(doubled.evaluate({&argument, 1}, out));
    EXPECT_EQ(DoubledFeature::s_uiBatches, batches + 1);
    EXPECT_THAT(out, ElementsAre(ElementsAre(7.0, 2.0, 4.0), ElementsAre(7.0), ElementsAre(7.0, 6.0)));
}

TEST(FunctionAdaptor, RefusesAnythingButOneArgumentOfAsManyWindowsAsResults) {
    XprMean mean;
    const std::vector<DoubleVector> in(2, DoubleVector{1.0});
    std::vector<DoubleVector> out(2);
    const std::vector<Windows> two(2, Windows(in));
    EXPECT_FALSE(mean.evaluate({}, out));
    EXPECT_FALSE(mean.evaluate(two, out));
    EXPECT_FALSE(mean.evaluate({two.data(), 1}, std::span(out).first(1)));
}

TEST(FunctionAdaptor, OwnsOneFeatureAndCopiesClone) {
    XprTemporalMean original;
    EXPECT_THAT(evaluated(original, {2.0}), ElementsAre(2.0));
    XprTemporalMean copy(original);
    EXPECT_NE(copy.getFeature(), original.getFeature());
    EXPECT_THAT(evaluated(copy, {4.0}), ElementsAre(3.0)) << "the copy goes on where the original stood";
    EXPECT_THAT(evaluated(original, {2.0}), ElementsAre(2.0)) << "the original has not seen the copy's window";
}

// Forgets to override clone(), so that its clones are of another type.
class UnclonableFeature : public PickyFeature {};
struct XprUnclonable : SignalFeatureToFunctionAdaptorImpl<UnclonableFeature> {
    XprUnclonable() : SignalFeatureToFunctionAdaptorImpl("unclonable", "x") {}
};

TEST(FunctionAdaptor, CopyOfAFeatureThatClonesToAnotherTypeFails) {
    const XprUnclonable original;
    const testkit::LogRecorder recorder;
    XprUnclonable copy(original);
    EXPECT_THAT(recorder.records(), ElementsAre(testkit::failedAssertion("aCP.isNull() || m_ptr", "CloneableObjPtr")));
    EXPECT_EQ(copy.getFeature(), nullptr);
    const DoubleVector x = {1.0};
    const Windows argument(&x, 1);
    DoubleVector out;
    EXPECT_FALSE(copy.evaluate({&argument, 1}, {&out, 1}));
}

TEST(FunctionAdaptor, HasAMemoryWhenTheFeatureCanBeResetOrTheAdaptorSaysSo) {
    EXPECT_TRUE(XprTemporalMean().hasMemory());
    EXPECT_TRUE(XprPrevious().hasMemory());
    EXPECT_FALSE(XprMean().hasMemory());
    EXPECT_FALSE(XprRange().hasMemory());
}

// A feature that is itself a function and remembers.
class CountFeature : public virtual Zantrix::Math::SignalFeatureWithMemory, public SignalFeatureFunctionAdaptorImpl {
public:
    CountFeature() : SignalFeatureFunctionAdaptorImpl("count", "x", 0) {}
    bool compute(const DoubleVector&, DoubleVector& out) override {
        out.push_back(++m_dCount);
        return true;
    }
    bool reset() override {
        m_dCount = 0.0;
        return true;
    }
    Cloneable* clone() const override { return new CountFeature(*this); }

private:
    double m_dCount = 0.0;
};

TEST(FunctionAdaptor, FeatureThatIsAFunctionAndResettableHasAMemoryThatResets) {
    CountFeature count;
    EXPECT_TRUE(count.hasMemory());
    evaluated(count, {});
    EXPECT_THAT(evaluated(count, {}), ElementsAre(2.0));
    EXPECT_TRUE(count.resetMemory());
    EXPECT_THAT(evaluated(count, {}), ElementsAre(1.0));
}

TEST(FunctionAdaptor, ResetReachesTheFeatureAndLeavesAloneWhatCannotBeReset) {
    XprTemporalMean mean;
    evaluated(mean, {2.0});
    EXPECT_TRUE(mean.resetMemory());
    EXPECT_THAT(evaluated(mean, {4.0}), ElementsAre(4.0));

    XprPrevious previous;
    evaluated(previous, {5.0});
    EXPECT_TRUE(previous.resetMemory());
    EXPECT_THAT(evaluated(previous, {6.0}), ElementsAre(5.0));
}

TEST(FunctionAdaptor, HandsParametersToTheFeatureUnderItsKeys) {
    XprRange range;
    ASSERT_TRUE(range.setParameters({{"startIndex", 1.0}, {"length", 2.0}}));
    EXPECT_THAT(evaluated(range, {1.0, 2.0, 3.0, 4.0}), ElementsAre(2.0, 3.0));
    XprRange copy(range);
    EXPECT_THAT(evaluated(copy, {5.0, 6.0, 7.0}), ElementsAre(6.0, 7.0));

    XprScaled scaled;
    ASSERT_TRUE(scaled.setParameters({{"factors", "2 3"}, {"gain", 0.5}}));
    EXPECT_THAT(evaluated(scaled, {1.0}), ElementsAre(3.0));
}

TEST(FunctionAdaptor, TellsWhenTheFeatureRefusesItsParameters) {
    EXPECT_FALSE(XprScaled().setParameters({{"factors", "2 abc"}}));
    EXPECT_FALSE(XprMean().setParameters({{"factors", "2"}}));
    EXPECT_TRUE(XprMean().setParameters({}));
}

TEST(FunctionParameter, WholeNumbersAreThoseThatAConfigurationHoldsAsIntegers) {
    const double inf = std::numeric_limits<double>::infinity();
    const double nan = std::numeric_limits<double>::quiet_NaN();
    for (const double number : {0.0, 1.0, 2147483647.0}) {
        EXPECT_TRUE(accepts(ParameterKind::WholeNumber, {"p", number})) << number;
    }
    for (const double number : {-1.0, 0.5, 2147483648.0, 1e300, inf, -inf, nan}) {
        EXPECT_FALSE(accepts(ParameterKind::WholeNumber, {"p", number})) << number;
    }
    EXPECT_TRUE(accepts(ParameterKind::Number, {"p", -1e300}));
    EXPECT_FALSE(accepts(ParameterKind::Number, {"p", inf}));
    EXPECT_FALSE(accepts(ParameterKind::Number, {"p", nan}));
    EXPECT_FALSE(accepts(ParameterKind::Number, {"p", "1"}));
    EXPECT_FALSE(accepts(ParameterKind::WholeNumber, {"p", "1"}));
    EXPECT_FALSE(accepts(ParameterKind::Text, {"p", 1.0}));
    EXPECT_TRUE(accepts(ParameterKind::Text, {"p", ""}));
}

TEST(FunctionParameter, ConfigurationHoldsEachValueInTheTypeThatFits) {
    const auto config = makeConfiguration(
        "f", {{"million", 1e6}, {"half", 0.5}, {"huge", 1e300}, {"negative", -3.0}, {"text", "350 440"}});
    int integer = 0;
    double number = 0.0;
    std::string text;
    EXPECT_TRUE(config.getIntParameter("f.million", integer));
    EXPECT_EQ(integer, 1000000);
    EXPECT_TRUE(config.getIntParameter("f.negative", integer));
    EXPECT_EQ(integer, -3);
    EXPECT_FALSE(config.getIntParameter("f.half", integer));
    EXPECT_TRUE(config.getFloatParameter("f.half", number));
    EXPECT_EQ(number, 0.5);
    EXPECT_TRUE(config.getFloatParameter("f.huge", number));
    EXPECT_EQ(number, 1e300);
    EXPECT_TRUE(config.getStringParameter("f.text", text));
    EXPECT_EQ(text, "350 440");
    EXPECT_FALSE(config.parameterDefined("text"));
}

}  // namespace
