#include "ClassTrees.h"

#include <murvane/audio.h>
#include <murvane/math/BasicFeatures.h>
#include <murvane/math/RangeFeature.h>
#include <murvane/math/SignalFeatureComposed.h>

#include <gtest/gtest.h>

#include <memory>
#include <type_traits>

using namespace Zantrix;
using namespace Zantrix::Audio;
using namespace class_trees;
using Math::SignalFeature;
using Math::SignalFeatureWithMemory;
using Math::SignalFeatureWithParameters;
using Math::Xpr::FunctionAdaptor;
using Math::Xpr::SignalFeatureFunctionAdaptorImpl;

namespace {

template <class F>
constexpr bool isFeature = hasOneVirtual<F, SignalFeature>&& hasOneVirtual<F, Cloneable>&& hasOneVirtual<F, Object>&&
                               std::has_virtual_destructor_v<F> &&
                           !std::is_abstract_v<F> && std::is_copy_constructible_v<F> && std::is_copy_assignable_v<F>;

template <class F>
constexpr bool isAudioFeature = isFeature<F>&& hasOne<F, AudioFeature>;

/// The interfaces that only some features have.
template <class F>
constexpr bool isPlain = hasNo<F, Resettable>&& hasNo<F, SignalFeatureWithParameters>&& hasNo<F, FunctionAdaptor>;

// The interfaces.
static_assert(isInterface<SignalFeature> && hasOneVirtual<SignalFeature, Cloneable>);
static_assert(isInterface<SignalFeatureWithParameters> && hasOneVirtual<SignalFeatureWithParameters, SignalFeature> &&
              hasNo<SignalFeatureWithParameters, Resettable>);
static_assert(hasOneVirtual<SignalFeatureWithMemory, SignalFeature> &&
              hasOneVirtual<SignalFeatureWithMemory, Resettable> && std::is_abstract_v<SignalFeatureWithMemory>);
static_assert(hasOneVirtual<SignalFeatureFunctionAdaptorImpl, SignalFeature> &&
              hasOne<SignalFeatureFunctionAdaptorImpl, Math::Xpr::SingleVariableFunctionImpl> &&
              hasOne<SignalFeatureFunctionAdaptorImpl, FunctionAdaptor>);
static_assert(std::is_abstract_v<AudioFeature> && hasOneVirtual<AudioFeature, SignalFeature> &&
              hasNo<AudioFeature, SignalFeatureWithParameters> && hasNo<AudioFeature, Resettable>);
static_assert(std::is_same_v<std::underlying_type_t<AudioFeature::FeatureType>, unsigned>);

// Spectra.
static_assert(isAudioFeature<SpectrumFeature> && hasOneVirtual<SpectrumFeature, AudioFeature> &&
              hasOneOrdinary<SpectrumFeature, SignalFeatureFunctionAdaptorImpl> && hasNo<SpectrumFeature, Resettable> &&
              hasNo<SpectrumFeature, SignalFeatureWithParameters>);
static_assert(isAudioFeature<SpectrumReducedFeature> && hasOneOrdinary<SpectrumReducedFeature, SpectrumFeature> &&
              hasOneVirtual<SpectrumReducedFeature, AudioFeature> && hasNo<SpectrumReducedFeature, Resettable> &&
              !std::is_default_constructible_v<SpectrumReducedFeature>);

// Zero crossing and clipping.
static_assert(isAudioFeature<ZeroCrossingRateFeature> && hasOneOrdinary<ZeroCrossingRateFeature, AudioFeature> &&
              hasOneVirtual<ZeroCrossingRateFeature, SignalFeatureWithParameters> &&
              hasNo<ZeroCrossingRateFeature, Resettable> && hasNo<ZeroCrossingRateFeature, FunctionAdaptor>);
static_assert(isAudioFeature<ClippingRateFeature> && hasOneOrdinary<ClippingRateFeature, AudioFeature> &&
              isPlain<ClippingRateFeature> && !std::is_default_constructible_v<ClippingRateFeature>);

// The features of a spectrum.
template <class F>
constexpr bool isPlainAudioFeature = isAudioFeature<F>&& hasOneOrdinary<F, AudioFeature>&& isPlain<F>;

static_assert(isAudioFeature<FlatnessFeature> && hasOneOrdinary<FlatnessFeature, AudioFeature> &&
              hasOneOrdinary<FlatnessFeature, SignalFeatureFunctionAdaptorImpl> && hasNo<FlatnessFeature, Resettable> &&
              hasNo<FlatnessFeature, SignalFeatureWithParameters>);
static_assert(isPlainAudioFeature<SpectralSlopeFeature> && isPlainAudioFeature<SpectralWeightedAreaFeature>);
static_assert(isPlainAudioFeature<OldHarmonicProductFeature> && isPlainAudioFeature<HarmonicProductFeature> &&
              isPlainAudioFeature<RobustHarmonicProductFeature> && isPlainAudioFeature<AntiHarmonicProductFeature>);
static_assert(isPlainAudioFeature<PeaksFeature> && isPlainAudioFeature<NonLogPeaksFeature> &&
              isPlainAudioFeature<PonderatedPeaksFeature> && hasOneOrdinary<PonderatedPeaksFeature, PeaksFeature> &&
              hasNo<NonLogPeaksFeature, PeaksFeature>);
static_assert(isAudioFeature<SpectralRangeFeature> && hasOneOrdinary<SpectralRangeFeature, AudioFeature> &&
              hasOneOrdinary<SpectralRangeFeature, Math::RangeFeature> &&
              hasOneVirtual<SpectralRangeFeature, SignalFeatureWithParameters> &&
              hasNo<SpectralRangeFeature, Resettable> && hasNo<SpectralRangeFeature, FunctionAdaptor>);
static_assert(isAudioFeature<MaxSpectralRangesFeature> && hasOneOrdinary<MaxSpectralRangesFeature, AudioFeature> &&
              hasOneVirtual<MaxSpectralRangesFeature, SignalFeatureWithParameters> &&
              hasNo<MaxSpectralRangesFeature, Math::RangeFeature> && hasNo<MaxSpectralRangesFeature, Resettable> &&
              hasNo<MaxSpectralRangesFeature, FunctionAdaptor>);
static_assert(isPlainAudioFeature<LowFreqEnergyRatioFeature> && isPlainAudioFeature<LowFreqEnergyRatiosFeature>);

// The features of samples.
template <class F>
constexpr bool isAudioFeatureWithMemory =
    isAudioFeature<F>&& hasOneOrdinary<F, AudioFeature>&& hasOne<F, SignalFeatureWithMemory>&&
        hasOneVirtual<F, Resettable>&& hasNo<F, SignalFeatureWithParameters>&& hasNo<F, FunctionAdaptor>;

static_assert(isPlainAudioFeature<EnergyHistogramFeature> && isPlainAudioFeature<SilenceRatioFeature> &&
              isPlainAudioFeature<MaxNeighbourhoodFeature> && isPlainAudioFeature<MyFeature>);
static_assert(isAudioFeatureWithMemory<RatiosFeature> && hasOneOrdinary<RatiosFeature, SignalFeatureWithMemory>);
static_assert(isAudioFeatureWithMemory<DeltaToSlidingMeanFeature> &&
              hasOneOrdinary<DeltaToSlidingMeanFeature, SignalFeatureWithMemory>);
static_assert(isAudioFeatureWithMemory<MeanEnergyAboveThreshFeature> &&
              hasOneOrdinary<MeanEnergyAboveThreshFeature, SignalFeatureWithMemory>);
static_assert(isAudioFeatureWithMemory<MeanMaxFeature> && hasOneVirtual<MeanMaxFeature, SignalFeatureWithMemory>);

// The mathematics library's own features.
static_assert(isFeature<Math::AmplitudeFeature> && isPlain<Math::AmplitudeFeature>);
static_assert(isFeature<Math::MeanFeature> && isPlain<Math::MeanFeature>);
static_assert(isFeature<Math::TemporalMeanFeature> && hasOne<Math::TemporalMeanFeature, SignalFeatureWithMemory>);
static_assert(isFeature<Math::SlidingWindowFeature> && hasOne<Math::SlidingWindowFeature, SignalFeatureWithMemory>);
static_assert(isFeature<Math::RangeFeature> && hasOne<Math::RangeFeature, SignalFeatureWithParameters> &&
              hasNo<Math::RangeFeature, Resettable>);
static_assert(isFeature<Math::SignalFeatureComposed> && hasOne<Math::SignalFeatureComposed, SignalFeatureWithMemory>);

// Factories.
static_assert(hasOneOrdinary<AudioFeatureFactory, Math::SignalFeatureFactory> &&
              std::is_default_constructible_v<AudioFeatureFactory> &&
              std::is_copy_constructible_v<AudioFeatureFactory> && std::is_copy_assignable_v<AudioFeatureFactory> &&
              std::has_virtual_destructor_v<AudioFeatureFactory>);
static_assert(sizeof(AudioFeatureFactory) == sizeof(Math::SignalFeatureFactory));

// Computers.
template <class C>
constexpr bool isComputer =
    hasOneVirtual<C, Math::FeatureComputer>&& hasOneVirtual<C, Resettable>&& hasOneVirtual<C, Cloneable>&&
        hasOneVirtual<C, Object>&& std::has_virtual_destructor_v<C> &&
    !std::is_copy_constructible_v<C>;

static_assert(isComputer<Math::FeatureComputerImpl> && std::is_abstract_v<Math::FeatureComputerImpl>);
static_assert(isComputer<FeatureComputerImpl> && std::is_abstract_v<FeatureComputerImpl> &&
              hasOne<FeatureComputerImpl, Math::FeatureComputerImpl> &&
              hasNo<FeatureComputerImpl, Math::FeatureComputerWithInputs>);
static_assert(isComputer<FeatureComputerWithInputsImpl> && !std::is_abstract_v<FeatureComputerWithInputsImpl> &&
              hasOneOrdinary<FeatureComputerWithInputsImpl, Math::FeatureComputerWithInputsImpl> &&
              hasOneVirtual<FeatureComputerWithInputsImpl, Math::FeatureComputerImpl> &&
              hasOne<FeatureComputerWithInputsImpl, Math::FeatureComputerWithInputs>);
static_assert(std::is_default_constructible_v<FeatureComputerWithInputsImpl>);

// What the traits above say of a second, separate base must be true of objects as well.
TEST(InterfaceShape, AnExpressionFunctionIsOneFeatureWhicheverBaseLeadsThere) {
    SpectrumReducedFeature feature(8);
    SignalFeature* const pDirect = &feature;
    AudioFeature* const pAudio = &feature;
    SignalFeatureFunctionAdaptorImpl* const pAdaptor = &feature;
    EXPECT_EQ(static_cast<SignalFeature*>(pAudio), pDirect);
    EXPECT_EQ(static_cast<SignalFeature*>(pAdaptor), pDirect);
    EXPECT_EQ(dynamic_cast<void*>(pDirect), static_cast<void*>(&feature));
    EXPECT_EQ(dynamic_cast<FunctionAdaptor*>(pDirect), static_cast<FunctionAdaptor*>(pAdaptor));
}

TEST(InterfaceShape, AFeatureWithParametersIsOneFeatureWhicheverBaseLeadsThere) {
    ZeroCrossingRateFeature feature;
    SignalFeature* const pDirect = &feature;
    SignalFeatureWithParameters* const pParameters = &feature;
    AudioFeature* const pAudio = &feature;
    EXPECT_EQ(static_cast<SignalFeature*>(pParameters), pDirect);
    EXPECT_EQ(static_cast<SignalFeature*>(pAudio), pDirect);
    EXPECT_EQ(dynamic_cast<SignalFeatureWithParameters*>(pDirect), pParameters);
}

}  // namespace
