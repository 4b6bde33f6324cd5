#include <murvane/audio/computation/AudioFeatureComputerImpl.h>
#include <murvane/audio/features/AudioFeatureImpl.h>
#include <murvane/audio/features/ZeroCrossingFeatures.h>
#include <testkit/LogRecorder.h>
#include <testkit/SameBits.h>

#include <gtest/gtest.h>
#include <log4cplus/loglevel.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <limits>
#include <memory>
#include <random>
#include <string>
#include <vector>

using namespace Zantrix;
using Math::DoubleVector;
using Math::SignalFeature;
using Math::SignalFeatureFactory;
using testkit::sameBits;

namespace {

class Random {
public:
    explicit Random(std::uint64_t seed) : m_engine(seed) {}

    std::size_t below(std::size_t bound) { return static_cast<std::size_t>(m_engine() % bound); }

    template <class T>
    const T& oneOf(const std::vector<T>& choices) {
        return choices[below(choices.size())];
    }

    double sample() { return static_cast<double>(m_engine() >> 11) * 0x1.0p-52 - 1.0; }

    DoubleVector window(std::size_t size) {
        DoubleVector values(size);
        std::generate(values.begin(), values.end(), [this] { return sample(); });
        return values;
    }

private:
    std::mt19937_64 m_engine;
};

Math::SignalFeaturePool& pool() {
    static Audio::FeatureComputerWithInputsImpl computer;
    return computer.getFeaturePool();
}

// Elements of all kinds that the pool builds.
const std::vector<std::string>& elements() {
    static const std::vector<std::string> built = [] {
        std::vector<std::string> names{"AMPLITUDE",  "MEAN",         "TEMPORALMEAN",          "SLIDINGWINDOW(3)",
                                       "RANGE(1,2)", "RANGE( 0,1 )", "ZEROCROSSINGRATE(8000)"};
        for (unsigned value = 0; value <= 26; ++value) {
            names.emplace_back(
                Audio::AudioFeature::getFeatureTypeString(static_cast<Audio::AudioFeature::FeatureType>(value)));
        }
        names.emplace_back("SPECTRALRANGE(440,20)");
        names.emplace_back("MAXSPECTRALRANGES(350,440)");
        const testkit::LogRecorder quiet(log4cplus::FATAL_LOG_LEVEL);
        std::erase_if(names, [](const std::string& name) {
            const std::unique_ptr<SignalFeature> pFeature(pool().getNewFeature(name.c_str()));
            return pFeature == nullptr;
        });
        return names;
    }();
    return built;
}

std::string randomName(Random& random, std::size_t mostElements) {
    std::string name = random.oneOf(elements());
    for (std::size_t more = random.below(mostElements); more > 0; --more) {
        name += '_' + random.oneOf(elements());
    }
    return name;
}

TEST(FeatureNames, ACompositionEqualsItsPartsCalledByHand) {
    const testkit::LogRecorder quiet(log4cplus::FATAL_LOG_LEVEL);
    Random random(1);
    int computed = 0;
    for (int round = 0; round < 400; ++round) {
        const std::string name = randomName(random, 5);
        const std::unique_ptr<SignalFeature> pComposed(pool().getNewFeature(name.c_str()));
        ASSERT_NE(pComposed, nullptr) << name;
        StringVector parts;
        ASSERT_TRUE(SignalFeatureFactory::splitElements(name.c_str(), parts)) << name;
        std::vector<std::unique_ptr<SignalFeature>> features;
        for (const std::string& part : parts) {
            features.emplace_back(pool().getNewBaseFeature(part.c_str()));
            ASSERT_NE(features.back(), nullptr) << part;
        }
        for (int i = 0; i < 4; ++i) {
            DoubleVector values = random.window(64);
            DoubleVector out;
            const bool works = pComposed->compute(values, out);
            bool worksByHand = true;
            for (auto pFeature = features.rbegin(); pFeature != features.rend() && worksByHand; ++pFeature) {
                DoubleVector next;
                worksByHand = (*pFeature)->compute(values, next);
                values = next;
            }
            ASSERT_EQ(works, worksByHand) << name;
            if (works) {
                ASSERT_TRUE(sameBits(out, values)) << name;
                ++computed;
            }
        }
    }
    EXPECT_GT(computed, 400);
}

TEST(FeatureNames, ACloneInMidStreamContinuesEqually) {
    const testkit::LogRecorder quiet(log4cplus::FATAL_LOG_LEVEL);
    Random random(2);
    for (int round = 0; round < 300; ++round) {
        const std::string name = randomName(random, 4);
        const std::unique_ptr<SignalFeature> pFeature(pool().getNewFeature(name.c_str()));
        ASSERT_NE(pFeature, nullptr) << name;
        DoubleVector ignored;
        for (std::size_t i = random.below(4); i > 0; --i) {
            pFeature->compute(random.window(64), ignored);
        }
        const std::unique_ptr<Cloneable> pCloneable(pFeature->clone());
        auto* pClone = dynamic_cast<SignalFeature*>(pCloneable.get());
        ASSERT_NE(pClone, nullptr) << name;
        std::vector<DoubleVector> windows;
        for (int i = 0; i < 4; ++i) {
            windows.push_back(random.window(64));
        }
        // First all through the one, then all through the other: neither may see the other's windows.
        std::vector<DoubleVector> expected(windows.size());
        std::vector<bool> works;
        for (std::size_t i = 0; i < windows.size(); ++i) {
            works.push_back(pFeature->compute(windows[i], expected[i]));
        }
        for (std::size_t i = 0; i < windows.size(); ++i) {
            DoubleVector out;
            ASSERT_EQ(pClone->compute(windows[i], out), works[i]) << name;
            ASSERT_TRUE(sameBits(out, expected[i])) << name;
        }
    }
}

TEST(FeatureNames, AFeatureAppendsAndNeverTouchesItsInput) {
    const testkit::LogRecorder quiet(log4cplus::FATAL_LOG_LEVEL);
    Random random(3);
    for (int round = 0; round < 300; ++round) {
        const std::string name = randomName(random, 4);
        const std::unique_ptr<SignalFeature> pFirst(pool().getNewFeature(name.c_str()));
        const std::unique_ptr<SignalFeature> pSecond(pool().getNewFeature(name.c_str()));
        ASSERT_NE(pFirst, nullptr) << name;
        const DoubleVector window = random.window(64);
        const DoubleVector copy(window);
        DoubleVector out;
        DoubleVector behind{1.5, -2.5};
        const bool works = pFirst->compute(window, out);
        ASSERT_EQ(pSecond->compute(window, behind), works) << name;
        EXPECT_TRUE(sameBits(window, copy)) << name;
        ASSERT_GE(behind.size(), 2u) << name;
        EXPECT_EQ(behind[0], 1.5) << name;
        EXPECT_EQ(behind[1], -2.5) << name;
        behind.erase(behind.begin(), behind.begin() + 2);
        EXPECT_TRUE(sameBits(behind, out)) << name;
    }
}

TEST(FeatureNames, AComputerEqualsAFeatureOfEachNameByItself) {
    const testkit::LogRecorder quiet(log4cplus::FATAL_LOG_LEVEL);
    Random random(4);
    int computed = 0;
    for (int round = 0; round < 150; ++round) {
        Audio::FeatureComputerWithInputsImpl computer;
        Audio::FeatureComputerWithInputsImpl together;
        std::vector<std::unique_ptr<SignalFeature>> features;
        for (std::size_t count = 1 + random.below(4); count > 0; --count) {
            const std::string name = randomName(random, 3);
            ASSERT_TRUE(computer.addFeature(name.c_str())) << name;
            ASSERT_TRUE(together.addFeature(name.c_str())) << name;
            features.emplace_back(pool().getNewFeature(name.c_str()));
        }
        std::vector<DoubleVector> windows;
        std::vector<DoubleVector> results;
        bool allWork = true;
        for (int i = 0; i < 5 && allWork; ++i) {
            windows.push_back(random.window(64));
            DoubleVector expected;
            for (const auto& pFeature : features) {
                allWork = pFeature->compute(windows.back(), expected) && allWork;
            }
            computer.setInput("Amplitude", windows.back());
            DoubleVector out{-1.0};
            ASSERT_EQ(computer.computeFeatures(out), allWork);
            ASSERT_TRUE(sameBits(out, allWork ? expected : DoubleVector()));
            results.push_back(out);
        }
        together.setInputWindows("Amplitude", windows);
        std::vector<DoubleVector> out(windows.size());
        ASSERT_EQ(together.computeFeatures(out), allWork);
        for (std::size_t i = 0; i < windows.size() && allWork; ++i) {
            ASSERT_TRUE(sameBits(out[i], results[i]));
            ++computed;
        }
    }
    EXPECT_GT(computed, 150);
}

// Text that is often nearly a name.
std::string randomText(Random& random) {
    static const std::vector<std::string> pieces{
        "_", "_",  "(",  ")",  ",",  " ",    "-5",       "100x", "1",  "440",
        "x", "\t", "\n", "(,", "()", "\x80", "\xff\xfe", "?",    "__", "18446744073709551616"};
    std::string text;
    for (std::size_t count = random.below(8); count > 0; --count) {
        if (random.below(2) == 0) {
            std::string element = random.oneOf(elements());
            if (random.below(3) == 0) {
                element[random.below(element.size())] = static_cast<char>(1 + random.below(255));
            }
            text += element;
        } else {
            text += random.oneOf(pieces);
        }
    }
    return text;
}

TEST(FeatureNames, AnyTextIsANameOrIsRefused) {
    const testkit::LogRecorder quiet(log4cplus::FATAL_LOG_LEVEL);
    Random random(5);
    int names = 0;
    int built = 0;
    for (int round = 0; round < 20000; ++round) {
        const std::string text = randomText(random);
        Audio::AudioFeature::parseFeatureType(text.c_str());
        StringVector parts;
        const bool isName = SignalFeatureFactory::splitElements(text.c_str(), parts);
        ASSERT_EQ(isName, !parts.empty()) << text;
        std::string again;
        for (const std::string& part : parts) {
            std::string base;
            StringVector params;
            ASSERT_TRUE(SignalFeatureFactory::splitParams(part.c_str(), base, params)) << text;
            again += (again.empty() ? "" : "_") + part;
        }
        ASSERT_EQ(again, isName ? text : "") << text;
        const std::unique_ptr<SignalFeature> pFeature(pool().getNewFeature(text.c_str()));
        const std::unique_ptr<SignalFeature> pBase(pool().getNewBaseFeature(text.c_str()));
        if (pFeature != nullptr) {
            ASSERT_TRUE(isName) << text;
            DoubleVector out;
            pFeature->compute(random.window(16), out);
            ++built;
        }
        names += isName ? 1 : 0;
    }
    EXPECT_GT(names, 1000);
    EXPECT_GT(built, 500);
}

TEST(FeatureNames, AnElementWrittenFromItsPartsSplitsIntoThem) {
    Random random(6);
    const std::string letters = "ABCxyz0189 .-+=?\x80\xe9";
    const auto text = [&](std::size_t most) {
        std::string result;
        for (std::size_t count = 1 + random.below(most); count > 0; --count) {
            result += letters[random.below(letters.size())];
        }
        return result;
    };
    for (int round = 0; round < 2000; ++round) {
        const std::string base = text(6);
        StringVector params;
        std::string element = base;
        for (std::size_t count = random.below(4); count > 0; --count) {
            // Parameters neither begin nor end with a blank, but may hold an underscore.
            params.emplace_back("p").append(text(4)).append("_q");
            element.append(params.size() == 1 ? "(" : ",").append(random.below(3), ' ').append(params.back());
            element.append(random.below(3), '\t');
        }
        element += params.empty() ? "" : ")";
        std::string splitBase;
        StringVector splitParams;
        ASSERT_TRUE(SignalFeatureFactory::splitParams(element.c_str(), splitBase, splitParams)) << element;
        EXPECT_EQ(splitBase, base) << element;
        EXPECT_EQ(splitParams, params) << element;
    }
}

TEST(ZeroCrossingProperty, AnySplitIntoWindowsCountsTheSameCrossings) {
    Random random(7);
    const std::vector<double> values{-1.0, -1e-200, -0.0, 0.0, 1e-200, 1.0, std::numeric_limits<double>::quiet_NaN()};
    for (int round = 0; round < 300; ++round) {
        DoubleVector samples;
        for (std::size_t count = random.below(60); count > 0; --count) {
            samples.push_back(random.oneOf(values));
        }
        // Told another way: a sample crosses where it is the first zero of a run, or where the signs on either side
        // differ and their product is large enough to be told from zero.
        double expected = 0.0;
        for (std::size_t i = 0; i < samples.size(); ++i) {
            const bool startsRun = samples[i] == 0.0 && (i == 0 || samples[i - 1] != 0.0);
            const bool changesSign = i > 0 && std::fabs(samples[i] * samples[i - 1]) > 0.0 &&
                                     (samples[i] > 0.0) != (samples[i - 1] > 0.0) && !std::isnan(samples[i - 1]);
            expected += startsRun || changesSign ? 1.0 : 0.0;
        }
        Audio::ZeroCrossingRateFeature feature;
        double crossings = 0.0;
        for (std::size_t done = 0; done < samples.size();) {
            const std::size_t size = std::min(random.below(7), samples.size() - done);
            const auto first = samples.begin() + static_cast<std::ptrdiff_t>(done);
            const DoubleVector window(first, first + static_cast<std::ptrdiff_t>(size));
            DoubleVector out;
            ASSERT_TRUE(feature.compute(window, out));
            crossings += std::round(out.at(0) * static_cast<double>(size));
            done += size;
        }
        EXPECT_EQ(crossings, expected);
    }
}

}  // namespace
