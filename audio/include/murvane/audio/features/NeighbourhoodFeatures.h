#pragma once

#include <murvane/audio/features/AudioFeatureImpl.h>
#include <murvane/core/CloneableObjPtr.h>

/// Values compared with their neighbours, among the bins of a vector or from window to window.
///
///     AudioFeature
///     ├── MaxNeighbourhoodFeature
///     ├── DeltaToSlidingMeanFeature, also a Math::SignalFeatureWithMemory
///     └── MyFeature
namespace Zantrix::Audio {

/// "NEIGHBOURHOODOFMAX": the largest value of a vector, such as a spectrum, between its two neighbours; at either end
/// of the vector, the three values there.
class MURVANE_API MaxNeighbourhoodFeature : public AudioFeature {
public:
    static const char* getName();

    /// Appends three values. False, and nothing appended, for fewer than four values.
    bool compute(const Math::DoubleVector& in, Math::DoubleVector& out) override;

    Cloneable* clone() const override;
};

/// "DELTATOSLIDINGMEAN": how far a value lies above the mean of the last five, itself included; of fewer while fewer
/// were seen. Meant for the single value of another feature, once per window.
class MURVANE_API DeltaToSlidingMeanFeature : public Math::SignalFeatureWithMemory, public AudioFeature {
public:
    DeltaToSlidingMeanFeature();

    static const char* getName();

    /// Appends one value. False, after an assertion record and with nothing appended, when the input is not exactly one
    /// value, and after the object was moved from.
    bool compute(const Math::DoubleVector& in, Math::DoubleVector& out) override;

    /// Forgets the values seen; also brings an object that was moved from back to use.
    bool reset() override;

    Cloneable* clone() const override;

private:
    CloneableObjPtr<Math::SignalFeatureWithMemory> m_pSlidingMeanFeature;
    Math::DoubleVector m_vScratch;  // the sliding mean
};

/// "MYFEATURE": an empty feature, kept as the place to try a new one in.
class MURVANE_API MyFeature : public AudioFeature {
public:
    static const char* getName();

    /// Appends nothing; always true.
    bool compute(const Math::DoubleVector& in, Math::DoubleVector& out) override;

    Cloneable* clone() const override;
};

}  // namespace Zantrix::Audio
