#include <murvane/audio/computation/AudioFeatureComputerImpl.h>
#include <murvane/audio/features/AudioFeatureFactory.h>
#include <murvane/audio/features/AudioFeatureImpl.h>
#include <murvane/audio/features/SpectrumFeatures.h>
#include <murvane/audio/features/ZeroCrossingFeatures.h>
#include <murvane/core/MemAccount.h>
#include <murvane/core/RefCountedObjPtr.h>
#include <testkit/LogRecorder.h>

#include <gtest/gtest.h>
#include <log4cplus/loglevel.h>

#include <array>
#include <memory>
#include <string>
#include <vector>

using namespace Zantrix;
using Math::DoubleVector;
using Math::SignalFeature;

namespace {

std::int64_t live(const char* account) {
    return MemAccount::named(account).live();
}

// Makes, uses, copies and destroys every kind of object of the features that lives in an account.
void aRoundOfEverything() {
    const testkit::LogRecorder log;
    const DoubleVector window(64, 0.5);
    DoubleVector out;

    Audio::AudioFeatureFactory factory;
    std::vector<std::unique_ptr<Cloneable>> objects;
    for (unsigned value = 0; value <= 27; ++value) {
        const std::string name =
            Audio::AudioFeature::getFeatureTypeString(static_cast<Audio::AudioFeature::FeatureType>(value));
        for (const std::string params : {"", "(1)", "(440,20)", "(x)", "(440,x)", "("}) {
            if (SignalFeature* pFeature = factory.getNewBaseFeature((name + params).c_str())) {
                objects.emplace_back(pFeature);
                pFeature->compute(window, out);
                objects.emplace_back(pFeature->clone());
            }
            delete factory.getNewFeature((name + params + "_SPECTRUM").c_str());
            delete factory.getNewFeature(("NOSUCH_" + name + params).c_str());
        }
    }
    const std::unique_ptr<Audio::SpectrumFeature[]> pMany(new Audio::SpectrumFeature[3]);

    Audio::FeatureComputerWithInputsImpl computer;
    computer.getFeaturePool().addFactory(new Audio::AudioFeatureFactory);
    for (const char* name : {"SPECTRUM", "MEAN_SPECTRUM100HZ", "ZEROCROSSINGRATE", "NOSUCH_SPECTRUM", "SPECTRUM_NOSUCH",
                             "SPECTRUM_SPECTRUM(1)"}) {
        computer.addFeature(name);
    }
    computer.setInput("SPECTRUM", window);
    computer.computeFeatures(out);
    EXPECT_EQ(computer.clone(), nullptr);

    const RefCountedObjPtr<SignalFeature> pShared(factory.getNewBaseFeature("SPECTRUM"));
    const RefCountedObjPtr<SignalFeature> pAlso(pShared);
    EXPECT_GE(live("ReferenceCount"), 1);
    EXPECT_GE(live("FunctionAdaptor"), 5);
    EXPECT_GE(live("SignalFeatureFactory"), 2);
}

TEST(MemAccounts, ReturnToWhereTheyWereAfterARoundOfEverything) {
    // What stays for the life of the process is made by the first round.
    aRoundOfEverything();
    const auto before = MemAccount::snapshot();
    aRoundOfEverything();
    EXPECT_EQ(MemAccount::snapshot(), before);
}

TEST(MemAccounts, OfWhatOnlyCallersMakeAreEmptyAfterARoundOfEverything) {
    aRoundOfEverything();
    for (const char* account : {"SignalFeatureFactory", "FunctionAdaptor", "ReferenceCount"}) {
        EXPECT_EQ(live(account), 0) << account;
    }
}

TEST(MemAccounts, AreNamedByTheirClasses) {
    EXPECT_STREQ(Audio::AudioFeatureFactory::getMemAccountName(), "SignalFeatureFactory");
    EXPECT_STREQ(Audio::SpectrumFeature::getMemAccountName(), "FunctionAdaptor");
    EXPECT_STREQ(Audio::SpectrumReducedFeature::getMemAccountName(), "FunctionAdaptor");
    EXPECT_STREQ(Math::Xpr::FunctionAdaptor::getMemAccountName(), "FunctionAdaptor");
}

TEST(MemAccounts, CountObjectsWhicheverBaseDeletesThem) {
    const auto before = live("FunctionAdaptor");
    Object* const pObject = new Audio::SpectrumFeature;
    Cloneable* const pCloneable = new Audio::SpectrumReducedFeature(8);
    Math::Xpr::FunctionAdaptor* const pFunction = new Audio::SpectrumFeature;
    Audio::AudioFeature* const pAudio = new Audio::SpectrumFeature;
    EXPECT_EQ(live("FunctionAdaptor"), before + 4);
    delete pObject;
    delete pCloneable;
    delete pFunction;
    delete pAudio;
    EXPECT_EQ(live("FunctionAdaptor"), before);
}

TEST(MemAccounts, OtherFeaturesComeFromTheOrdinaryHeap) {
    const auto before = MemAccount::snapshot();
    const std::unique_ptr<SignalFeature> pCrossing(new Audio::ZeroCrossingRateFeature(8000));
    const std::unique_ptr<SignalFeature> pClipping(new Audio::ClippingRateFeature(-1.0, 1.0));
    EXPECT_EQ(MemAccount::snapshot(), before);
}

}  // namespace
