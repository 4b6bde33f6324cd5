#pragma once

#include <murvane/math/MathFeatureComputerImpl.h>

#include <boost/serialization/access.hpp>
#include <boost/serialization/export.hpp>

/// Feature computers that know the audio features: the mathematics library's computers with an `AudioFeatureFactory` in
/// their pool. They are archived as their mathematical base and nothing more, under the keys
/// "AudioFeatureComputerImpl" and "AudioFeatureComputerWithInputsImpl".
namespace Zantrix::Audio {

/// A base for computers that bring their own inputs; abstract, as `clone` stays open.
class MURVANE_API FeatureComputerImpl : public virtual Math::FeatureComputerImpl {
public:
    /// Adds the audio factory to the pool. A pool that refuses it is reported at WARN; the computer then knows the
    /// mathematical features only.
    FeatureComputerImpl();

private:
    friend class boost::serialization::access;
    template <class Archive>
    void serialize(Archive& archive, unsigned int version);
};

/// The computer that applications use: bind inputs, name features, compute. It cannot be cloned.
class MURVANE_API FeatureComputerWithInputsImpl : public Math::FeatureComputerWithInputsImpl {
public:
    /// As for `FeatureComputerImpl`.
    FeatureComputerWithInputsImpl();

private:
    friend class boost::serialization::access;
    template <class Archive>
    void serialize(Archive& archive, unsigned int version);
};

}  // namespace Zantrix::Audio

BOOST_CLASS_EXPORT_KEY2(Zantrix::Audio::FeatureComputerImpl, "AudioFeatureComputerImpl")
BOOST_CLASS_EXPORT_KEY2(Zantrix::Audio::FeatureComputerWithInputsImpl, "AudioFeatureComputerWithInputsImpl")
