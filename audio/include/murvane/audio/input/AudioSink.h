#pragma once

#include <murvane/core/Object.h>

namespace Zantrix::Audio {

/// Takes audio, sample by sample.
class MURVANE_API AudioSink : public virtual Object {
public:
    /// Takes the samples [begin, end), whatever the sink makes of them; false when it refuses them.
    virtual bool pushAudio(const double* begin, const double* end) = 0;
};

/// Takes linear audio: samples with full scale 1.0.
class MURVANE_API LinearAudioSink : public AudioSink {
public:
    bool pushAudio(const double* begin, const double* end) override { return pushLinearAudio(begin, end); }

    /// Takes the linear samples [begin, end); false when the sink refuses them.
    virtual bool pushLinearAudio(const double* begin, const double* end) = 0;
};

}  // namespace Zantrix::Audio
