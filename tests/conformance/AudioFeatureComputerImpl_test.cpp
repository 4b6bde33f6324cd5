#include <murvane/audio/computation/AudioFeatureComputerImpl.h>
#include <murvane/audio/features/AudioFeatureFactory.h>
#include <murvane/audio/features/SpectrumFeatures.h>
#include <murvane/audio/features/ZeroCrossingFeatures.h>
#include <murvane/core/MemAccount.h>
#include <testkit/LogRecorder.h>
#include <testkit/SameBits.h>
#include <testkit/WavFixture.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <log4cplus/loglevel.h>

#include <algorithm>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <vector>

using namespace Zantrix;
using Math::DoubleVector;
using Math::SignalFeature;
using testing::ElementsAre;
using testing::IsEmpty;
using testkit::failedAssertion;
using testkit::LogRecord;
using testkit::LogRecorder;
using testkit::sameBits;

namespace {

LogRecord record(log4cplus::LogLevel level, const std::string& message, std::optional<int> line = {}) {
    return {"murvane.audio.FeatureComputerImpl", level, message, "AudioFeatureComputerImpl", line};
}

LogRecord trace(const std::string& message) {
    return record(log4cplus::TRACE_LOG_LEVEL, message);
}

LogRecord refused(int line) {
    return record(log4cplus::WARN_LOG_LEVEL, "Could not add AudioFeatureFactory to feature pool", line);
}

// Factories are added to the pool of the virtual base, so that one of the same name can be there first.
class FactoryFirst : public virtual Math::FeatureComputerImpl {
protected:
    FactoryFirst() { getFeaturePool().addFactory(new Audio::AudioFeatureFactory); }
};

class NameOnlyFactory : public Math::SignalFeatureFactory {
public:
    const char* getFactoryName() const override { return "AudioFeatureFactory"; }
    SignalFeature* getNewBaseFeature(const char*) override { return nullptr; }
};

class ImpostorFirst : public virtual Math::FeatureComputerImpl {
protected:
    ImpostorFirst() { getFeaturePool().addFactory(new NameOnlyFactory); }
};

template <class... First>
class OwnInputs : public First..., public Audio::FeatureComputerImpl {
public:
    using FeatureComputerImpl::computeFeatures;
    bool bind(const DoubleVector& window) { return bindInput("Amplitude", {&window, 1}); }
    Cloneable* clone() const override { return nullptr; }
};

template <class First>
class WithInputs : public First, public Audio::FeatureComputerWithInputsImpl {};

std::vector<DoubleVector> windowsOf(std::size_t count, std::size_t size) {
    const std::vector<double> samples = testkit::noise((count + 1) * size / 2, 1);
    std::vector<DoubleVector> windows;
    for (std::size_t i = 0; i < count; ++i) {
        const auto first = samples.begin() + static_cast<std::ptrdiff_t>(i * size / 2);
        windows.emplace_back(first, first + static_cast<std::ptrdiff_t>(size));
    }
    return windows;
}

TEST(AudioFeatureComputer, BuildsAudioFeaturesByName) {
    Audio::FeatureComputerWithInputsImpl withInputs;
    OwnInputs<> ownInputs;
    for (Math::FeatureComputerImpl* pComputer :
         {static_cast<Math::FeatureComputerImpl*>(&withInputs), static_cast<Math::FeatureComputerImpl*>(&ownInputs)}) {
        for (const char* name : {"SPECTRUM", "spectrum100hz", "ZeroCrossingRate(8000)",
                                 "TEMPORALMEAN_ZEROCROSSINGRATE_Amplitude", "RANGE(0,3)_SPECTRUM500HZ", "MEAN"}) {
            const std::unique_ptr<SignalFeature> pFeature(pComputer->getFeaturePool().getNewFeature(name));
            EXPECT_NE(pFeature, nullptr) << name;
            EXPECT_TRUE(pComputer->addFeature(name)) << name;
        }
        for (const char* name : {"NOSUCH", "MYFEATURE", "SPECTRALSLOPE_SPECTRUM", "CLIPPINGRATE", "ENERGYHISTOGRAM"}) {
            EXPECT_FALSE(pComputer->addFeature(name)) << name;
        }
    }
}

TEST(AudioFeatureComputer, ComputesOneVectorOfAllFeatures) {
    const std::vector<DoubleVector> windows = windowsOf(1, 256);
    Audio::FeatureComputerWithInputsImpl computer;
    EXPECT_TRUE(computer.addFeature("ZEROCROSSINGRATE"));
    EXPECT_TRUE(computer.addFeature("SPECTRUM500HZ"));
    EXPECT_TRUE(computer.addFeature("RANGE(2,2)_SPECTRUM"));
    EXPECT_TRUE(computer.setInput("Amplitude", windows[0]));
    DoubleVector expected;
    EXPECT_TRUE(Audio::ZeroCrossingRateFeature().compute(windows[0], expected));
    EXPECT_TRUE(Audio::SpectrumReducedFeature(8).compute(windows[0], expected));
    DoubleVector spectrum;
    EXPECT_TRUE(Audio::SpectrumFeature().compute(windows[0], spectrum));
    expected.append(spectrum.begin() + 2, spectrum.begin() + 4);
    DoubleVector out{-1.0};
    EXPECT_TRUE(computer.computeFeatures(out));
    EXPECT_TRUE(sameBits(out, expected));
}

TEST(AudioFeatureComputer, WithOwnInputsComputesAndResetsToo) {
    OwnInputs<> computer;
    EXPECT_TRUE(computer.addFeature("TEMPORALMEAN_ZEROCROSSINGRATE"));
    const DoubleVector window{1.0, -1.0};
    EXPECT_TRUE(computer.bind(window));
    DoubleVector out;
    EXPECT_TRUE(computer.computeFeatures(out));
    EXPECT_THAT(out, ElementsAre(0.5));
    EXPECT_TRUE(computer.computeFeatures(out));
    EXPECT_THAT(out, ElementsAre(0.75));
    EXPECT_TRUE(computer.reset());
    EXPECT_TRUE(computer.computeFeatures(out));
    EXPECT_THAT(out, ElementsAre(1.0));
}

TEST(AudioFeatureComputer, ResetLeavesZeroCrossingAlone) {
    Audio::FeatureComputerWithInputsImpl computer;
    EXPECT_TRUE(computer.addFeature("ZEROCROSSINGRATE"));
    EXPECT_TRUE(computer.addFeature("TEMPORALMEAN"));
    DoubleVector window{0.0};
    computer.setInput("Amplitude", window);
    DoubleVector out;
    EXPECT_TRUE(computer.computeFeatures(out));
    EXPECT_THAT(out, ElementsAre(1.0, 0.0));
    EXPECT_TRUE(computer.reset());
    EXPECT_TRUE(computer.computeFeatures(out));
    EXPECT_THAT(out, ElementsAre(0.0, 0.0));
    window[0] = 8.0;
    EXPECT_TRUE(computer.reset());
    EXPECT_TRUE(computer.computeFeatures(out));
    EXPECT_THAT(out, ElementsAre(0.0, 8.0));
}

TEST(AudioFeatureComputer, ResetKeepsTheWindowOfASpectrum) {
    Audio::FeatureComputerWithInputsImpl computer;
    EXPECT_TRUE(computer.addFeature("SPECTRUM"));
    DoubleVector window(64, 1.0);
    computer.setInput("Amplitude", window);
    DoubleVector out;
    EXPECT_TRUE(computer.computeFeatures(out));
    EXPECT_TRUE(computer.reset());
    window.resize(128, 1.0);
    const LogRecorder log;
    EXPECT_FALSE(computer.computeFeatures(out));
    EXPECT_THAT(out, IsEmpty());
    EXPECT_THAT(log.records(),
                ElementsAre(failedAssertion("m_pSignalWindow->getSize() == uiSizeFFT", "AudioFeatureImpl")));
}

TEST(AudioFeatureComputer, ConstructionIsTraced) {
    LogRecorder log(log4cplus::TRACE_LOG_LEVEL);
    const Audio::FeatureComputerWithInputsImpl withInputs;
    EXPECT_THAT(log.take(), ElementsAre(trace("ENTER: FeatureComputerWithInputsImpl ctor"),
                                        trace("EXIT:  FeatureComputerWithInputsImpl ctor")));
    const OwnInputs<> ownInputs;
    EXPECT_THAT(log.take(),
                ElementsAre(trace("ENTER: FeatureComputerImpl ctor"), trace("EXIT:  FeatureComputerImpl ctor")));
}

TEST(AudioFeatureComputer, ConstructionIsSilentOtherwise) {
    const LogRecorder log;
    const Audio::FeatureComputerWithInputsImpl withInputs;
    const OwnInputs<> ownInputs;
    EXPECT_THAT(log.records(), IsEmpty());
}

TEST(AudioFeatureComputer, ARefusedFactoryIsAWarning) {
    LogRecorder log(log4cplus::TRACE_LOG_LEVEL);
    OwnInputs<FactoryFirst> ownInputs;
    EXPECT_THAT(log.take(), ElementsAre(trace("ENTER: FeatureComputerImpl ctor"), refused(38),
                                        trace("EXIT:  FeatureComputerImpl ctor")));
    WithInputs<FactoryFirst> withInputs;
    EXPECT_THAT(log.take(), ElementsAre(trace("ENTER: FeatureComputerWithInputsImpl ctor"), refused(70),
                                        trace("EXIT:  FeatureComputerWithInputsImpl ctor")));
    EXPECT_TRUE(ownInputs.addFeature("SPECTRUM"));
    EXPECT_TRUE(withInputs.addFeature("SPECTRUM"));
}

TEST(AudioFeatureComputer, ARefusedFactoryLeavesTheMathematicalFeatures) {
    const LogRecorder log;
    OwnInputs<ImpostorFirst> ownInputs;
    WithInputs<ImpostorFirst> withInputs;
    EXPECT_THAT(log.records(), ElementsAre(refused(38), refused(70)));
    for (Math::FeatureComputerImpl* pComputer :
         {static_cast<Math::FeatureComputerImpl*>(&ownInputs), static_cast<Math::FeatureComputerImpl*>(&withInputs)}) {
        EXPECT_FALSE(pComputer->addFeature("SPECTRUM"));
        EXPECT_TRUE(pComputer->addFeature("TEMPORALMEAN_MEAN"));
    }
    withInputs.setInput("Amplitude", DoubleVector{1.0, 2.0});
    DoubleVector out;
    EXPECT_TRUE(withInputs.computeFeatures(out));
    EXPECT_THAT(out, ElementsAre(1.5));
}

TEST(AudioFeatureComputer, ARefusedFactoryIsNotLeaked) {
    MemAccount& account = MemAccount::named("SignalFeatureFactory");
    const auto before = account.live();
    {
        const LogRecorder log;
        const OwnInputs<FactoryFirst> ownInputs;
        const WithInputs<ImpostorFirst> withInputs;
        EXPECT_EQ(account.live(), before + 4);
    }
    EXPECT_EQ(account.live(), before);
}

TEST(AudioFeatureComputer, CannotBeCloned) {
    const std::unique_ptr<Cloneable> pComputer = std::make_unique<Audio::FeatureComputerWithInputsImpl>();
    const LogRecorder log;
    EXPECT_EQ(pComputer->clone(), nullptr);
    EXPECT_THAT(log.records(), ElementsAre(failedAssertion("Not implemented : FeatureComputerWithInputsImpl::clone",
                                                           "MathFeatureComputerImpl", 106)));
}

TEST(AudioFeatureComputer, BindsInputsThroughItsInterface) {
    const std::unique_ptr<Math::FeatureComputerWithInputs> pComputer =
        std::make_unique<Audio::FeatureComputerWithInputsImpl>();
    EXPECT_TRUE(dynamic_cast<Math::FeatureComputerImpl&>(*pComputer).addFeature("ZEROCROSSINGRATE"));
    DoubleVector window{1.0, -1.0};
    EXPECT_TRUE(pComputer->setInput("Amplitude", window));
    DoubleVector out;
    EXPECT_TRUE(pComputer->computeFeatures(out));
    EXPECT_THAT(out, ElementsAre(0.5));
    window = {-1.0, -1.0, -1.0, 0.0};
    EXPECT_TRUE(pComputer->computeFeatures(out));
    EXPECT_THAT(out, ElementsAre(0.25));
    EXPECT_FALSE(pComputer->setInput(nullptr, window));
    EXPECT_FALSE(pComputer->setInput("", window));
}

TEST(AudioFeatureComputer, ReadsNamedInputsAsLastElements) {
    const DoubleVector left{1.0, -1.0};
    const DoubleVector right{1.0, 1.0, 1.0, -1.0};
    Audio::FeatureComputerWithInputsImpl computer;
    computer.setInput("left", left);
    computer.setInput("right", right);
    for (const char* name : {"ZEROCROSSINGRATE", "ZEROCROSSINGRATE_right", "ZEROCROSSINGRATE_left", "right"}) {
        EXPECT_TRUE(computer.addFeature(name)) << name;
    }
    EXPECT_FALSE(computer.addFeature("ZEROCROSSINGRATE_Right"));
    DoubleVector out;
    EXPECT_TRUE(computer.computeFeatures(out));
    EXPECT_THAT(out, ElementsAre(0.5, 0.25, 0.5, 1.0, 1.0, 1.0, -1.0));
}

TEST(AudioFeatureComputer, NamesShareOneSpectrum) {
    MemAccount& functions = MemAccount::named("FunctionAdaptor");
    const auto before = functions.live();
    Audio::FeatureComputerWithInputsImpl computer;
    for (const char* name : {"SPECTRUM", "MEAN_SPECTRUM", "RANGE(0,1)_Spectrum()", "TEMPORALMEAN_MEAN_spectrum"}) {
        EXPECT_TRUE(computer.addFeature(name)) << name;
    }
    EXPECT_EQ(functions.live(), before + 1);
    EXPECT_TRUE(computer.addFeature("SPECTRUM100HZ"));
    EXPECT_EQ(functions.live(), before + 2);
    // It is also computed once: a window of another length is refused once for all names.
    computer.setInput("Amplitude", DoubleVector(64, 1.0));
    DoubleVector out;
    EXPECT_TRUE(computer.computeFeatures(out));
    computer.setInput("Amplitude", DoubleVector(128, 1.0));
    const LogRecorder log;
    EXPECT_FALSE(computer.computeFeatures(out));
    EXPECT_EQ(log.records().size(), 1u);
}

// Passes the input on, and counts how often.
class CountingFeature : public virtual SignalFeature {
public:
    explicit CountingFeature(int& count) : m_pCount(&count) {}
    bool compute(const DoubleVector& in, DoubleVector& out) override {
        ++*m_pCount;
        out.append(in);
        return true;
    }
    Cloneable* clone() const override { return new CountingFeature(*this); }

private:
    int* m_pCount;
};

class CountingFactory : public Math::SignalFeatureFactory {
public:
    explicit CountingFactory(int& count) : m_pCount(&count) {}
    const char* getFactoryName() const override { return "CountingFactory"; }
    SignalFeature* getNewBaseFeature(const char* name) override {
        return std::string(name) == "COUNTED" ? new CountingFeature(*m_pCount) : nullptr;
    }

private:
    int* m_pCount;
};

TEST(AudioFeatureComputer, ComputesASharedTailOnceAWindow) {
    int count = 0;
    Audio::FeatureComputerWithInputsImpl computer;
    EXPECT_TRUE(computer.getFeaturePool().addFactory(new CountingFactory(count)));
    for (const char* name : {"ZEROCROSSINGRATE_COUNTED_SPECTRUM", "COUNTED_SPECTRUM", "MEAN_COUNTED_SPECTRUM",
                             "RANGE(0,2)_COUNTED_SPECTRUM", "COUNTED_SPECTRUM"}) {
        EXPECT_TRUE(computer.addFeature(name)) << name;
    }
    const std::vector<DoubleVector> windows = windowsOf(5, 64);
    DoubleVector out;
    for (const DoubleVector& window : windows) {
        computer.setInput("Amplitude", window);
        EXPECT_TRUE(computer.computeFeatures(out));
    }
    EXPECT_EQ(count, 5);
    std::vector<DoubleVector> together(5);
    computer.setInputWindows("Amplitude", windows);
    EXPECT_TRUE(computer.computeFeatures(together));
    EXPECT_EQ(count, 10);
}

TEST(AudioFeatureComputer, WindowsTogetherEqualOneByOneToTheBit) {
    constexpr std::size_t count = 37;
    const std::vector<DoubleVector> windows = windowsOf(count, 256);
    Audio::FeatureComputerWithInputsImpl single;
    Audio::FeatureComputerWithInputsImpl batch;
    for (const char* name :
         {"SPECTRUM", "ZEROCROSSINGRATE", "TEMPORALMEAN_SPECTRUM100HZ", "SPECTRUM500HZ_Amplitude",
          "SLIDINGWINDOW(5)_ZEROCROSSINGRATE", "MEAN_RANGE(3,4)_SPECTRUM", "ZEROCROSSINGRATE_SPECTRUM200HZ"}) {
        EXPECT_TRUE(single.addFeature(name)) << name;
        EXPECT_TRUE(batch.addFeature(name)) << name;
    }
    for (const std::size_t atOnce : {1, 2, 5, 8, 9, 37}) {
        std::vector<DoubleVector> out(count);
        EXPECT_TRUE(single.reset());
        EXPECT_TRUE(batch.reset());
        for (std::size_t done = 0; done < count; done += atOnce) {
            const std::size_t size = std::min(atOnce, count - done);
            EXPECT_TRUE(batch.setInputWindows("Amplitude", std::span(windows).subspan(done, size)));
            EXPECT_TRUE(batch.computeFeatures(std::span(out).subspan(done, size)));
        }
        for (std::size_t i = 0; i < count; ++i) {
            DoubleVector expected;
            single.setInput("Amplitude", windows[i]);
            EXPECT_TRUE(single.computeFeatures(expected));
            ASSERT_TRUE(sameBits(out[i], expected)) << atOnce << " at once, window " << i;
        }
    }
}

TEST(AudioFeatureComputer, AFailureLeavesEveryOutputEmpty) {
    std::vector<DoubleVector> windows = windowsOf(9, 64);
    windows[6].resize(32);
    Audio::FeatureComputerWithInputsImpl computer;
    EXPECT_TRUE(computer.addFeature("ZEROCROSSINGRATE"));
    EXPECT_TRUE(computer.addFeature("SPECTRUM"));
    EXPECT_TRUE(computer.setInputWindows("Amplitude", windows));
    std::vector<DoubleVector> out(9, DoubleVector{-1.0});
    const LogRecorder log;
    EXPECT_FALSE(computer.computeFeatures(out));
    EXPECT_EQ(out, std::vector<DoubleVector>(9));
}

}  // namespace
