#include <murvane/math/BasicFeatures.h>
#include <murvane/math/RangeFeature.h>
#include <murvane/math/SignalFeatureComposed.h>
#include <testkit/LogRecorder.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <memory>
#include <stdexcept>

using namespace Zantrix;
using namespace Zantrix::Math;
using testing::ElementsAre;
using testing::IsEmpty;

namespace {

// Every probe holds a share of it, so that the shares tell how many live.
const std::shared_ptr<int> g_pToken = std::make_shared<int>();

long live() {
    return g_pToken.use_count() - 1;
}

// Cannot be reset or cloned when told so.
class ProbeFeature : public virtual SignalFeatureWithMemory {
public:
    explicit ProbeFeature(bool resets = true, bool clones = true) : m_bResets(resets), m_bClones(clones) {}

    bool compute(const DoubleVector& in, DoubleVector& out) override {
        out.append(in);
        return true;
    }
    bool reset() override {
        ++m_iResets;
        return m_bResets;
    }
    Cloneable* clone() const override { return m_bClones ? new ProbeFeature(*this) : nullptr; }

    int m_iResets = 0;

private:
    bool m_bResets;
    bool m_bClones;
    std::shared_ptr<int> m_pToken = g_pToken;
};

TEST(SignalFeatureComposed, TheOuterFeatureSeesTheValuesOfTheInnerOne) {
    SignalFeatureComposed feature(new MeanFeature, new RangeFeature(1, 2));
    DoubleVector out{9.0};
    EXPECT_TRUE(feature.compute({100.0, 1.0, 2.0}, out));
    EXPECT_THAT(out, ElementsAre(9.0, 1.5));
    EXPECT_TRUE(feature.compute({100.0, 3.0, 4.0, 100.0}, out));
    EXPECT_THAT(out, ElementsAre(9.0, 1.5, 3.5));
}

TEST(SignalFeatureComposed, FailsWhenEitherFails) {
    DoubleVector out{9.0};
    SignalFeatureComposed innerFails(new MeanFeature, new RangeFeature(0, 5));
    EXPECT_FALSE(innerFails.compute({1.0}, out));
    SignalFeatureComposed outerFails(new RangeFeature(1, 1), new MeanFeature);
    EXPECT_FALSE(outerFails.compute({1.0, 2.0}, out));
    EXPECT_THAT(out, ElementsAre(9.0));
}

TEST(SignalFeatureComposed, WorksWhenInputAndOutputAreOne) {
    SignalFeatureComposed feature(new AmplitudeFeature, new AmplitudeFeature);
    DoubleVector both{1.0, 2.0};
    EXPECT_TRUE(feature.compute(both, both));
    EXPECT_THAT(both, ElementsAre(1.0, 2.0, 1.0, 2.0));
}

TEST(SignalFeatureComposed, ResetsWhateverHasAMemory) {
    SignalFeatureComposed feature(new TemporalMeanFeature, new SlidingWindowFeature(1));
    DoubleVector out;
    EXPECT_TRUE(feature.compute({1.0}, out));
    EXPECT_TRUE(feature.compute({3.0}, out));
    EXPECT_TRUE(feature.reset());
    EXPECT_TRUE(feature.compute({7.0}, out));
    EXPECT_THAT(out, ElementsAre(1.0, 2.0, 7.0));
    EXPECT_TRUE(SignalFeatureComposed(new MeanFeature, new AmplitudeFeature).reset());
}

TEST(SignalFeatureComposed, ResetsBothAlsoWhenOneCannot) {
    auto* pOuter = new ProbeFeature(false);
    auto* pInner = new ProbeFeature(true);
    SignalFeatureComposed outerRefuses(pOuter, pInner);
    EXPECT_FALSE(outerRefuses.reset());
    EXPECT_EQ(pOuter->m_iResets, 1);
    EXPECT_EQ(pInner->m_iResets, 1);
    pOuter = new ProbeFeature(true);
    pInner = new ProbeFeature(false);
    SignalFeatureComposed innerRefuses(pOuter, pInner);
    EXPECT_FALSE(innerRefuses.reset());
    EXPECT_EQ(pOuter->m_iResets, 1);
    EXPECT_EQ(pInner->m_iResets, 1);
}

TEST(SignalFeatureComposed, CloneHasTheMemoriesOfBothByItself) {
    SignalFeatureComposed feature(new TemporalMeanFeature, new TemporalMeanFeature);
    DoubleVector out;
    EXPECT_TRUE(feature.compute({4.0}, out));
    const std::unique_ptr<Cloneable> pClone(feature.clone());
    auto* pFeature = dynamic_cast<SignalFeatureComposed*>(pClone.get());
    ASSERT_NE(pFeature, nullptr);
    DoubleVector ofClone{4.0};
    for (const double value : {8.0, -3.0, 0.5}) {
        EXPECT_TRUE(feature.compute({value}, out));
    }
    for (const double value : {8.0, -3.0, 0.5}) {
        EXPECT_TRUE(pFeature->compute({value}, ofClone));
    }
    EXPECT_EQ(out, ofClone);
}

TEST(SignalFeatureComposed, CloneIsNullWhenAPartCannotBeCloned) {
    for (const bool outerClones : {false, true}) {
        const testkit::LogRecorder log;
        const SignalFeatureComposed feature(new ProbeFeature(true, outerClones), new ProbeFeature(true, !outerClones));
        EXPECT_EQ(feature.clone(), nullptr);
        EXPECT_THAT(log.records(), ElementsAre(testkit::failedAssertion("aCP.isNull() || m_ptr", "CloneableObjPtr")));
    }
    EXPECT_EQ(live(), 0);
}

TEST(SignalFeatureComposed, OwnsBothFeatures) {
    {
        const SignalFeatureComposed feature(new ProbeFeature, new ProbeFeature);
        const std::unique_ptr<Cloneable> pClone(feature.clone());
        EXPECT_EQ(live(), 4);
    }
    EXPECT_EQ(live(), 0);
}

TEST(ComposeFeatures, AsksForTheElementsAndDestroysWhatIsMadeWhenOneIsMissing) {
    const auto probeUnlessMissing = [](const char* element) -> SignalFeature* {
        return std::string(element) == "missing" ? nullptr : new ProbeFeature;
    };
    EXPECT_EQ(composeFeatures({}, probeUnlessMissing), nullptr);
    EXPECT_EQ(composeFeatures({"a", "missing", "b"}, probeUnlessMissing), nullptr);
    EXPECT_EQ(composeFeatures({"missing", "a", "b"}, probeUnlessMissing), nullptr);
    EXPECT_EQ(composeFeatures({"a", "b", "missing"}, probeUnlessMissing), nullptr);
    EXPECT_EQ(live(), 0);
    const std::unique_ptr<SignalFeature> pFeature(composeFeatures({"a", "b", "c"}, probeUnlessMissing));
    ASSERT_NE(pFeature, nullptr);
    EXPECT_EQ(live(), 3);
}

TEST(ComposeFeatures, LeavesNothingBehindWhenItsCallbackThrows) {
    const auto throwAtThird = [count = 0](const char*) mutable -> SignalFeature* {
        if (++count == 3) {
            throw std::runtime_error("no third");
        }
        return new ProbeFeature;
    };
    const long before = live();
    EXPECT_THROW(composeFeatures({"a", "b", "c"}, throwAtThird), std::runtime_error);
    EXPECT_EQ(live(), before);
}

}  // namespace
