#include <murvane/audio/computation/AudioFeatureComputerImpl.h>
#include <murvane/audio/features/AudioFeatureFactory.h>
#include <murvane/core/Logging.h>

#include <boost/archive/polymorphic_iarchive.hpp>
#include <boost/archive/polymorphic_oarchive.hpp>
#include <boost/serialization/base_object.hpp>
#include <boost/serialization/nvp.hpp>

BOOST_CLASS_EXPORT_IMPLEMENT(Zantrix::Audio::FeatureComputerImpl)
BOOST_CLASS_EXPORT_IMPLEMENT(Zantrix::Audio::FeatureComputerWithInputsImpl)

namespace Zantrix::Audio {

namespace {

constexpr const char* c_szSource = "AudioFeatureComputerImpl";

const Logger& logger() {
    static const Logger& logger = Logger::forCategory("murvane.audio.FeatureComputerImpl");
    return logger;
}

void addAudioFactory(Math::SignalFeaturePool& pool, int line) {
    if (!pool.addFactory(new AudioFeatureFactory)) {
        logger().log(LogLevel::Warn, c_szSource, line, "Could not add AudioFeatureFactory to feature pool");
    }
}

// Either computer is archived as its mathematical base.
template <class Archive, class Computer>
void serializeBase(Archive& archive, Computer& computer) {
    archive& boost::serialization::make_nvp("MathFeatureComputerImpl",
                                            boost::serialization::base_object<Math::FeatureComputerImpl>(computer));
}

// A computer may be archived and loaded through a pointer to any of its bases.
[[maybe_unused]] const void* const c_casts[] = {
    &boost::serialization::void_cast_register<FeatureComputerWithInputsImpl, Math::FeatureComputer>(),
    &boost::serialization::void_cast_register<FeatureComputerWithInputsImpl, Math::FeatureComputerWithInputs>(),
};

}  // namespace

FeatureComputerImpl::FeatureComputerImpl() {
    const TraceScope scope(logger(), "FeatureComputerImpl ctor", c_szSource, __LINE__);
    addAudioFactory(getFeaturePool(), 38);
}

template <class Archive>
void FeatureComputerImpl::serialize(Archive& archive, unsigned int) {
    serializeBase(archive, *this);
}

template void FeatureComputerImpl::serialize(boost::archive::polymorphic_iarchive&, unsigned int);
template void FeatureComputerImpl::serialize(boost::archive::polymorphic_oarchive&, unsigned int);

FeatureComputerWithInputsImpl::FeatureComputerWithInputsImpl() {
    const TraceScope scope(logger(), "FeatureComputerWithInputsImpl ctor", c_szSource, __LINE__);
    addAudioFactory(getFeaturePool(), 70);
}

template <class Archive>
void FeatureComputerWithInputsImpl::serialize(Archive& archive, unsigned int) {
    serializeBase(archive, *this);
}

template void FeatureComputerWithInputsImpl::serialize(boost::archive::polymorphic_iarchive&, unsigned int);
template void FeatureComputerWithInputsImpl::serialize(boost::archive::polymorphic_oarchive&, unsigned int);

}  // namespace Zantrix::Audio
