#include <murvane/math/BasicFeatures.h>
#include <murvane/math/SignalFeaturePool.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <utility>

using namespace Zantrix::Math;
using testing::ElementsAre;

namespace {

int g_iLive = 0;

// Builds a sliding window of its own length for one name, to tell which factory was asked.
class NamedFactory : public SignalFeatureFactory {
public:
    NamedFactory(std::string name, std::string builds, std::size_t length)
        : m_strName(std::move(name)), m_strBuilds(std::move(builds)), m_uiLength(length) {
        ++g_iLive;
    }
    ~NamedFactory() override { --g_iLive; }

    const char* getFactoryName() const override { return m_strName.c_str(); }
    SignalFeature* getNewBaseFeature(const char* name) override {
        return name != nullptr && m_strBuilds == name ? new SlidingWindowFeature(m_uiLength) : nullptr;
    }

private:
    std::string m_strName;
    std::string m_strBuilds;
    std::size_t m_uiLength;
};

std::size_t valuesOf(SignalFeature* pFeature) {
    const std::unique_ptr<SignalFeature> pOwned(pFeature);
    DoubleVector out;
    EXPECT_TRUE(pOwned != nullptr && pOwned->compute(DoubleVector(10, 1.0), out));
    return out.size();
}

TEST(SignalFeaturePool, HoldsTheMathematicalFactoryFromTheStart) {
    const SignalFeaturePool pool;
    EXPECT_EQ(valuesOf(pool.getNewBaseFeature("SlidingWindow(4)")), 4u);
    EXPECT_EQ(valuesOf(pool.getNewFeature("MEAN_AMPLITUDE")), 1u);
}

TEST(SignalFeaturePool, AsksTheFactoriesInTheOrderOfAddition) {
    SignalFeaturePool pool;
    EXPECT_TRUE(pool.addFactory(new NamedFactory("first", "BOTH", 2)));
    EXPECT_TRUE(pool.addFactory(new NamedFactory("second", "BOTH", 3)));
    EXPECT_TRUE(pool.addFactory(new NamedFactory("third", "ONLY", 5)));
    EXPECT_TRUE(pool.addFactory(new NamedFactory("fourth", "MEAN", 7)));
    EXPECT_EQ(valuesOf(pool.getNewBaseFeature("BOTH")), 2u);
    EXPECT_EQ(valuesOf(pool.getNewBaseFeature("ONLY")), 5u);
    EXPECT_EQ(valuesOf(pool.getNewBaseFeature("MEAN")), 1u);
}

TEST(SignalFeaturePool, ComposesAcrossItsFactories) {
    SignalFeaturePool pool;
    pool.addFactory(new NamedFactory("first", "A", 6));
    pool.addFactory(new NamedFactory("second", "B", 4));
    EXPECT_EQ(valuesOf(pool.getNewFeature("Range(0,3)_B_A_Amplitude")), 3u);
    EXPECT_EQ(valuesOf(pool.getNewFeature("A_B")), 4u);
    EXPECT_EQ(valuesOf(pool.getNewFeature("B")), 4u);
}

TEST(SignalFeaturePool, GivesNullForWhatNoFactoryBuilds) {
    SignalFeaturePool pool;
    pool.addFactory(new NamedFactory("first", "A", 6));
    for (const char* name : {static_cast<const char*>(nullptr), "", "a", "A_", "_A", "A_NOSUCH", "NOSUCH_A", "A__A"}) {
        EXPECT_EQ(pool.getNewFeature(name), nullptr) << (name == nullptr ? "null" : name);
    }
    EXPECT_EQ(pool.getNewBaseFeature(nullptr), nullptr);
    EXPECT_EQ(pool.getNewBaseFeature("A_A"), nullptr);
}

TEST(SignalFeaturePool, RefusesNull) {
    SignalFeaturePool pool;
    EXPECT_FALSE(pool.addFactory(nullptr));
}

TEST(SignalFeaturePool, RefusesAndDestroysAFactoryOfANameItHas) {
    SignalFeaturePool pool;
    EXPECT_TRUE(pool.addFactory(new NamedFactory("first", "A", 2)));
    EXPECT_FALSE(pool.addFactory(new NamedFactory("first", "B", 3)));
    EXPECT_FALSE(pool.addFactory(new NamedFactory("MathSignalFeatureFactory", "B", 3)));
    EXPECT_EQ(g_iLive, 1);
    EXPECT_EQ(pool.getNewBaseFeature("B"), nullptr);
    EXPECT_EQ(valuesOf(pool.getNewBaseFeature("A")), 2u);
}

TEST(SignalFeaturePool, RefusesAnObjectItHoldsAndKeepsIt) {
    SignalFeaturePool pool;
    auto* const pFactory = new NamedFactory("first", "A", 2);
    EXPECT_TRUE(pool.addFactory(pFactory));
    EXPECT_FALSE(pool.addFactory(pFactory));
    EXPECT_EQ(g_iLive, 1);
    EXPECT_EQ(valuesOf(pool.getNewBaseFeature("A")), 2u);
}

TEST(SignalFeaturePool, DestroysItsFactoriesWithItself) {
    {
        SignalFeaturePool pool;
        pool.addFactory(new NamedFactory("first", "A", 2));
        pool.addFactory(new NamedFactory("second", "B", 2));
        EXPECT_EQ(g_iLive, 2);
    }
    EXPECT_EQ(g_iLive, 0);
}

}  // namespace
