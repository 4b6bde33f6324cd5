#include "FeatureTesting.h"

#include <murvane/audio.h>

#include <span>

using namespace featuretesting;
using namespace Zantrix;

namespace {

std::unique_ptr<SignalFeature> newFeature(const std::string& name) {
    Math::SignalFeaturePool pool;
    pool.addFactory(new Audio::AudioFeatureFactory);
    return std::unique_ptr<SignalFeature>(pool.getNewFeature(name.c_str()));
}

// One name for every class, and an input that it computes.
struct Row {
    const char* name;
    DoubleVector in;
};

std::vector<Row> rows() {
    const DoubleVector values = risingSpectrum(64);
    std::vector<Row> rows = {{"RANGE(3,5)", values},
                             {"DELTATOSLIDINGMEAN", {0.25}},
                             {"SPECTRALRANGE(440,100)", values},
                             {"MAXSPECTRALRANGES(350,440)", values},
                             {"MEAN_SPECTRUM", values},
                             // Not a power of two: computed one by one.
                             {"SPECTRUM", risingSpectrum(20)}};
    for (const char* name :
         {"AMPLITUDE", "MEAN", "TEMPORALMEAN", "SLIDINGWINDOW(7)", "SPECTRUM", "SPECTRUM500HZ", "FLATNESS",
          "OLDHARMONICPRODUCT", "HARMONICPRODUCT", "ROBUSTHARMONICPRODUCT", "ANTIHARMONICPRODUCT",
          "SPECTRALWEIGHTEDAREA", "SILENCERATIO", "TEMPORALAMPLITUDEDISTRIBUTION", "PEAKS", "NEIGHBOURHOODOFMAX",
          "LOWFREQENERGYRATIO", "LOWFREQENERGYRATIOS", "ZEROCROSSINGRATE"}) {
        rows.push_back({name, values});
    }
    return rows;
}

DoubleVector behind(const DoubleVector& in, const DoubleVector& values) {
    DoubleVector result = in;
    result.append(values);
    return result;
}

void expectSameInPlace(const std::string& name, SignalFeature& feature, SignalFeature& inPlace,
                       const DoubleVector& in) {
    const DoubleVector expected = behind(in, valuesOf(feature, in));
    DoubleVector both = in;
    both.shrink_to_fit();  // it moves when it grows
    EXPECT_TRUE(inPlace.compute(both, both)) << name;
    EXPECT_THAT(both, IsIdenticalTo(expected)) << name;
}

}  // namespace

TEST(FeaturesInPlace, AppendToTheirInputWhatTheyComputeOfIt) {
    for (const Row& row : rows()) {
        const auto pFeature = newFeature(row.name);
        const auto pInPlace = newFeature(row.name);
        ASSERT_NE(pFeature, nullptr) << row.name;
        expectSameInPlace(row.name, *pFeature, *pInPlace, row.in);
    }
}

TEST(FeaturesInPlace, ThoseWithoutANameDoSoToo) {
    const DoubleVector in = risingSpectrum(64);
    const std::vector<std::unique_ptr<SignalFeature>> features = [] {
        std::vector<std::unique_ptr<SignalFeature>> all;
        all.push_back(std::make_unique<Audio::EnergyHistogramFeature>(1.0, 10));
        all.push_back(std::make_unique<Audio::MeanEnergyAboveThreshFeature>(0.0));
        all.push_back(std::make_unique<Audio::MeanMaxFeature>(4, 0.0));
        all.push_back(std::make_unique<Audio::ClippingRateFeature>(-0.5, 0.02));
        all.push_back(std::make_unique<Audio::NonLogPeaksFeature>());
        all.push_back(std::make_unique<Audio::MyFeature>());
        all.push_back(std::make_unique<Audio::SpectralSlopeFeature>());
        return all;
    }();
    for (const auto& pFeature : features) {
        const auto pInPlace = cloneOf(*pFeature);
        const SignalFeature& feature = *pFeature;
        expectSameInPlace(typeid(feature).name(), *pFeature, *pInPlace, in);
    }
}

TEST(FeaturesInPlace, SeveralWindowsAtATimeDoSoToo) {
    for (const Row& row : rows()) {
        const auto pFeature = newFeature(row.name);
        const auto pInPlace = newFeature(row.name);
        ASSERT_NE(pFeature, nullptr) << row.name;
        std::vector<DoubleVector> windows(11, row.in);
        std::vector<DoubleVector> expected;
        for (std::size_t i = 0; i < windows.size(); ++i) {
            windows[i][0] += static_cast<double>(i) / 64;
            windows[i].shrink_to_fit();
            expected.push_back(behind(windows[i], valuesOf(*pFeature, windows[i])));
        }
        EXPECT_TRUE(pInPlace->computeWindows(windows, windows)) << row.name;
        for (std::size_t i = 0; i < windows.size(); ++i) {
            EXPECT_THAT(windows[i], IsIdenticalTo(expected[i])) << row.name << ", window " << i;
        }
    }
}
