#pragma once

#include <murvane/audio/input/AudioSink.h>
#include <murvane/audio/input/SampleQueue.h>
#include <murvane/audio/input/TimeSource.h>
#include <murvane/core/Logging.h>
#include <murvane/core/RefCountedObjPtr.h>
#include <murvane/math/SignalFeature.h>

#include <boost/serialization/access.hpp>
#include <boost/serialization/export.hpp>

#include <cstdint>

namespace Zantrix::Audio {

/// Turns a stream of linear samples, pushed in pieces of any size, into windows of fixed length that may overlap, and
/// keeps the audio time of the stream. The windows are not weighted: features that need a shape apply it.
///
/// Life of a windower:
/// 1. Construct it and `configure` it; before that it has no window length and pops nothing.
/// 2. `pushLinearAudio`, then `popWindow` until it returns false; again and again.
/// 3. `reset` between streams. What does not fill a window stays until then and is never padded.
///
/// A windower belongs to one thread.
class MURVANE_API LinearAudioWindower : public virtual LinearAudioSink,
                                        public virtual TimeSource,
                                        public virtual Resettable,
                                        public ObjectWithLogger {
public:
    /// How to cut. Archived under the key "LinearAudioWindowerConfig".
    struct MURVANE_API Config {
        std::uint64_t m_uiSampleRate = 8000;    ///< samples per second
        std::uint64_t m_uiWindowSizeMs = 16;    ///< length of a window in milliseconds
        std::uint64_t m_uiWindowOverlapMs = 0;  ///< what consecutive windows share, in milliseconds
        bool m_bSuppressDCOffset = false;       ///< subtract the estimated DC offset from each window

        /// The length of a window in samples, m_uiSampleRate * m_uiWindowSizeMs / 1000: the product modulo 2^64, the
        /// quotient truncated, at least 1.
        std::uint64_t getWindowSizeInSamples() const;

        /// What consecutive windows share in samples, computed likewise, but for the lower bound.
        std::uint64_t getWindowOverlapInSamples() const;

    private:
        friend class boost::serialization::access;
        template <class Archive>
        void serialize(Archive& archive, unsigned int version);
    };

    LinearAudioWindower();

    /// A windower with the same configuration, freshly reset, with a DC estimator of its own: what is pending in the
    /// source and its times are not carried over.
    LinearAudioWindower(const LinearAudioWindower& other);

    /// Takes over everything, what is pending included. Both windowers share one DC estimator afterwards, so only one
    /// of them should go on.
    LinearAudioWindower& operator=(const LinearAudioWindower& other);

    ~LinearAudioWindower() override;

    /// Sets the lengths to those that the configuration tells. Neither the pending samples nor the times change.
    ///
    /// @return false when the overlap is not shorter than the window, in samples. The lengths are then set all the
    ///         same, and the time advance keeps its previous value: with an overlap as long as the window, `popWindow`
    ///         delivers the same window for ever; with a longer one, none
    bool configure(const Config& config);

    /// The last configuration, also one that was refused.
    const Config& getConfig() const { return m_config; }

    /// Appends samples to those pending; always true, also before `configure`.
    bool pushLinearAudio(const double* begin, const double* end) override;

    /// Takes the next window.
    ///
    /// @param window  replaced by the samples of the window; empty when too few are pending
    /// @return false when too few samples are pending or the windower is not configured, and then nothing has changed;
    ///         also, after an assertion record, when the DC offset cannot be estimated: then `window` holds the
    ///         uncorrected samples, nothing was consumed and the time did not advance
    bool popWindow(Math::DoubleVector& window);

    /// The time of the end of the last window popped, in seconds. It advances by the configured milliseconds, even
    /// where a window is not a whole number of samples.
    double getCurrentAudioTime() const override { return m_dCurrentAudioTime; }

    /// Sets the time from which the next windows count on, as after a seek; always true.
    bool setCurrentAudioTime(double seconds);

    /// The length of everything pushed since the last reset, in seconds.
    virtual double getTotalPushedAudioTime() const;

    /// Forgets the pending samples, the times and the DC estimate; the configuration stays.
    ///
    /// @return false, after an assertion record, when there is no DC estimator
    bool reset() override;

private:
    void createEstimator();
    bool suppressDCOffset(Math::DoubleVector& window);

    Config m_config;
    std::uint64_t m_uiWindowSizeInSamples = 0;
    std::uint64_t m_uiWindowOverlapInSamples = 0;
    double m_dWindowShiftSec = 0.0;
    RefCountedObjPtr<Math::SignalFeatureWithMemory> m_pFeatureDCOffset;
    SampleQueue m_pendingSamples;
    double m_dCurrentAudioTime = 0.0;
    std::uint64_t m_uiTotalPushedSamples = 0;
    bool m_bFirstWindow = true;
    Math::DoubleVector m_vScratch;
};

}  // namespace Zantrix::Audio

BOOST_CLASS_EXPORT_KEY2(Zantrix::Audio::LinearAudioWindower::Config, "LinearAudioWindowerConfig")
