#include <murvane/audio.h>
#include <testkit/AllocationCounter.h>
#include <testkit/WavFixture.h>

#include <gtest/gtest.h>

#include <cstdint>
#include <memory>
#include <new>
#include <vector>

using namespace Zantrix::Audio;
using Zantrix::Math::DoubleVector;
using Zantrix::Math::SignalFeature;

namespace {

template <typename F, typename... Arguments>
std::unique_ptr<SignalFeature> make(Arguments... arguments) {
    return std::make_unique<F>(arguments...);
}

}  // namespace

// A kernel's vectors are aligned wider than any plain object. The operators are called by name: a compiler may leave
// out what a new-expression takes and gives back.
TEST(AllocationCounter, CountsEveryFormOfNew) {
    constexpr std::align_val_t wide{64};
    const testkit::AllocationCounter allocations;
    void* const plain[] = {::operator new(4), ::operator new[](12), ::operator new(4, std::nothrow)};
    void* const aligned[] = {::operator new(100, wide), ::operator new[](300, wide),
                             ::operator new(100, wide, std::nothrow)};
    EXPECT_EQ(allocations.count(), 6U);
    ::operator delete(plain[0]);
    ::operator delete[](plain[1]);
    ::operator delete(plain[2], std::nothrow);
    for (void* memory : aligned) {
        EXPECT_EQ(reinterpret_cast<std::uintptr_t>(memory) % 64, 0U);
    }
    ::operator delete(aligned[0], wide);
    ::operator delete[](aligned[1], wide);
    ::operator delete(aligned[2], wide, std::nothrow);
}

// Windows come by the thousand: only the first one, which sizes the working storage, may allocate.
TEST(FeatureAllocations, NoFeatureAllocatesAfterItsFirstWindows) {
    std::vector<std::unique_ptr<SignalFeature>> features;
    features.push_back(make<FlatnessFeature>());
    features.push_back(make<SpectralWeightedAreaFeature>(8000, 500, 1500));
    features.push_back(make<SpectralSlopeFeature>());
    features.push_back(make<HarmonicProductFeature>());
    features.push_back(make<RobustHarmonicProductFeature>());
    features.push_back(make<OldHarmonicProductFeature>());
    features.push_back(make<AntiHarmonicProductFeature>());
    features.push_back(make<PeaksFeature>());
    features.push_back(make<PonderatedPeaksFeature>());
    features.push_back(make<NonLogPeaksFeature>());
    features.push_back(make<SpectralRangeFeature>(440, 20));
    auto pRanges = std::make_unique<MaxSpectralRangesFeature>();
    pRanges->addSpectralRange(440, 20);
    pRanges->addSpectralRange(1000, 200);
    features.push_back(std::move(pRanges));
    features.push_back(make<LowFreqEnergyRatioFeature>());
    features.push_back(make<LowFreqEnergyRatiosFeature>());
    features.push_back(make<SilenceRatioFeature>(50));
    features.push_back(make<RatiosFeature>(true));
    features.push_back(make<EnergyHistogramFeature>(1.0, 16));
    features.push_back(make<MeanEnergyAboveThreshFeature>(0.1));
    features.push_back(make<MeanMaxFeature>(10, 0.01));
    features.push_back(make<MaxNeighbourhoodFeature>());
    features.push_back(make<MyFeature>());
    const std::vector<double> samples = testkit::noise(128, 1);
    const DoubleVector window(samples.begin(), samples.end());
    for (std::size_t f = 0; f < features.size(); ++f) {
        DoubleVector out;
        // Twice, since a winning range changes places with the one before.
        for (int i = 0; i < 2; ++i) {
            ASSERT_TRUE(features[f]->compute(window, out)) << "feature " << f;
            out.clear();
        }
        const testkit::AllocationCounter allocations;
        for (int i = 0; i < 10; ++i) {
            ASSERT_TRUE(features[f]->compute(window, out)) << "feature " << f;
            out.clear();
        }
        EXPECT_EQ(allocations.count(), 0U) << "feature " << f;
    }
}

TEST(FeatureAllocations, DeltaToSlidingMeanAllocatesNothingOnceItsWindowIsFull) {
    DeltaToSlidingMeanFeature feature;
    const DoubleVector value = {0.5};
    DoubleVector out;
    for (int i = 0; i < 6; ++i) {
        ASSERT_TRUE(feature.compute(value, out));
        out.clear();
    }
    const testkit::AllocationCounter allocations;
    for (int i = 0; i < 10; ++i) {
        ASSERT_TRUE(feature.compute(value, out));
        out.clear();
    }
    EXPECT_EQ(allocations.count(), 0U);
}
