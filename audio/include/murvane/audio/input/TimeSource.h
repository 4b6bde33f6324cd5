#pragma once

#include <murvane/core/Object.h>

namespace Zantrix::Audio {

/// Knows how far an audio stream has come.
class MURVANE_API TimeSource : public virtual Object {
public:
    /// The current audio time in seconds.
    virtual double getCurrentAudioTime() const = 0;

    /// The same, for callers that know only one kind of time.
    virtual double getCurrentTime() const { return getCurrentAudioTime(); }
};

}  // namespace Zantrix::Audio
