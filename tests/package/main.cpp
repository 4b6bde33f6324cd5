// A program as a user writes it: it includes the one public header and links the one library. It archives a feature
// computer, loads it back through a pointer to its base, and computes features of a constant window, whose spectrum
// is known: that of the Hann window itself.
#include <murvane/audio.h>

#include <boost/archive/polymorphic_text_iarchive.hpp>
#include <boost/archive/polymorphic_text_oarchive.hpp>

#include <cmath>
#include <iostream>
#include <memory>
#include <sstream>

namespace {

bool check(bool condition, const char* what) {
    if (!condition) {
        std::cerr << "package test: " << what << '\n';
    }
    return condition;
}

std::unique_ptr<Zantrix::Math::FeatureComputerWithInputs> throughArchive() {
    std::stringstream archived;
    {
        Zantrix::Audio::FeatureComputerWithInputsImpl computer;
        check(computer.addFeature("SPECTRUM") && computer.addFeature("ZEROCROSSINGRATE"), "features have no names");
        const Zantrix::Math::FeatureComputerWithInputs* pBase = &computer;
        boost::archive::polymorphic_text_oarchive archive(archived);
        archive << boost::serialization::make_nvp("computer", pBase);
    }
    Zantrix::Math::FeatureComputerWithInputs* pLoaded = nullptr;
    boost::archive::polymorphic_text_iarchive archive(archived);
    archive >> boost::serialization::make_nvp("computer", pLoaded);
    return std::unique_ptr<Zantrix::Math::FeatureComputerWithInputs>(pLoaded);
}

}  // namespace

int main() {
    const auto pComputer = throughArchive();
    if (!check(dynamic_cast<Zantrix::Audio::FeatureComputerWithInputsImpl*>(pComputer.get()) != nullptr,
               "the archive gave another class")) {
        return 1;
    }
    const Zantrix::Math::DoubleVector window(256, 0.5);
    Zantrix::Math::DoubleVector values;
    const bool computed = check(pComputer->setInput("Amplitude", window) && pComputer->computeFeatures(values),
                                "the loaded computer computes nothing");
    const bool right = check(values.size() == 129, "a spectrum of 128 values and a rate were expected") &&
                       check(std::abs(values[0] - 0.798122) < 1e-6 && std::abs(values[1] - 0.201876) < 1e-6,
                             "the spectrum of a constant is wrong") &&
                       check(values[128] == 0.0, "a constant crosses zero");
    return computed && right ? 0 : 1;
}
