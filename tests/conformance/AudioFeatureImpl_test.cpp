#include <murvane/audio/features/AudioFeatureImpl.h>

#include <gtest/gtest.h>

#include <cctype>
#include <string>

using Zantrix::Audio::AudioFeature;

namespace {

constexpr const char* c_szNoName = "???Feature_FeatureType???";

struct Type {
    unsigned value;
    AudioFeature::FeatureType type;
    const char* name;  // null: none
};

constexpr Type c_types[] = {
    {0, AudioFeature::ENERGYHISTOGRAM, "ENERGYHISTOGRAM"},
    {1, AudioFeature::CLIPPINGRATE, "CLIPPINGRATE"},
    {2, AudioFeature::ZEROCROSSINGRATE, "ZEROCROSSINGRATE"},
    {3, AudioFeature::SPECTRUM, "SPECTRUM"},
    {4, AudioFeature::SPECTRUM100HZ, "SPECTRUM100HZ"},
    {5, AudioFeature::SPECTRUM200HZ, "SPECTRUM200HZ"},
    {6, AudioFeature::SPECTRUM500HZ, "SPECTRUM500HZ"},
    {7, AudioFeature::FLATNESS, "FLATNESS"},
    {8, AudioFeature::SPECTRALRANGE, "SPECTRALRANGE"},
    {9, AudioFeature::MAXSPECTRALRANGES, "MAXSPECTRALRANGES"},
    {10, AudioFeature::OLDHARMONICPRODUCT, "OLDHARMONICPRODUCT"},
    {11, AudioFeature::HARMONICPRODUCT, "HARMONICPRODUCT"},
    {12, AudioFeature::ROBUSTHARMONICPRODUCT, "ROBUSTHARMONICPRODUCT"},
    {13, AudioFeature::ANTIHARMONICPRODUCT, "ANTIHARMONICPRODUCT"},
    {14, AudioFeature::SPECTRALSLOPE, "SPECTRALSLOPE"},
    {15, AudioFeature::SPECTRALWEIGHTEDAREA, "SPECTRALWEIGHTEDAREA"},
    {16, AudioFeature::SILENCERATIO, "SILENCERATIO"},
    {17, AudioFeature::NOISERATIO, "NOISERATIO"},
    {18, AudioFeature::AMPLITUDEDISTRIBUTION, "AMPLITUDEDISTRIBUTION"},
    {19, AudioFeature::TEMPORALAMPLITUDEDISTRIBUTION, "TEMPORALAMPLITUDEDISTRIBUTION"},
    {20, AudioFeature::PEAKS, "PEAKS"},
    {21, AudioFeature::NONLOGPEAKS, nullptr},
    {22, AudioFeature::NEIGHBOURHOODOFMAX, "NEIGHBOURHOODOFMAX"},
    {23, AudioFeature::LOWFREQENERGYRATIO, "LOWFREQENERGYRATIO"},
    {24, AudioFeature::LOWFREQENERGYRATIOS, "LOWFREQENERGYRATIOS"},
    {25, AudioFeature::DELTATOSLIDINGMEAN, "DELTATOSLIDINGMEAN"},
    {26, AudioFeature::MYFEATURE, "MYFEATURE"},
};

// Every letter in the case that `upper` tells for its place.
template <class Upper>
std::string inCase(const std::string& name, Upper upper) {
    std::string text;
    for (std::size_t i = 0; i < name.size(); ++i) {
        const auto c = static_cast<unsigned char>(name[i]);
        text += static_cast<char>(upper(i) ? std::toupper(c) : std::tolower(c));
    }
    return text;
}

TEST(FeatureCatalogue, TypesHaveFixedNumbers) {
    unsigned expected = 0;
    for (const Type& type : c_types) {
        EXPECT_EQ(type.value, expected++);
        EXPECT_EQ(static_cast<unsigned>(type.type), type.value) << type.value;
    }
    EXPECT_EQ(expected, 27u);
}

TEST(FeatureCatalogue, EveryTypeHasItsStringInUpperCase) {
    for (const Type& type : c_types) {
        EXPECT_STREQ(AudioFeature::getFeatureTypeString(type.type), type.name == nullptr ? c_szNoName : type.name);
    }
}

TEST(FeatureCatalogue, Value21HasNoString) {
    EXPECT_STREQ(AudioFeature::getFeatureTypeString(static_cast<AudioFeature::FeatureType>(21)), c_szNoName);
}

TEST(FeatureCatalogue, ValuesBeyondTheLastHaveNoString) {
    for (const unsigned value : {27u, 28u, 255u, 256u, 0x7fffffffu, 0x80000000u, 0xffffffffu}) {
        EXPECT_STREQ(AudioFeature::getFeatureTypeString(static_cast<AudioFeature::FeatureType>(value)), c_szNoName)
            << value;
    }
}

TEST(FeatureCatalogue, EveryNameIsParsedWithoutRegardToCase) {
    for (const Type& type : c_types) {
        if (type.name == nullptr) {
            continue;
        }
        for (const std::string& name :
             {inCase(type.name, [](std::size_t) { return true; }), inCase(type.name, [](std::size_t) { return false; }),
              inCase(type.name, [](std::size_t i) { return i == 0; }),
              inCase(type.name, [](std::size_t i) { return i % 2 == 1; })}) {
            const auto parsed = AudioFeature::parseFeatureType(name.c_str());
            ASSERT_TRUE(parsed.isValid()) << name;
            EXPECT_EQ(parsed.getValue(), type.type) << name;
        }
    }
}

TEST(FeatureCatalogue, OtherTextIsNoName) {
    for (const char* name : {static_cast<const char*>(nullptr),
                             "",
                             " ",
                             "SPECTRUM ",
                             " SPECTRUM",
                             "SPECTRU",
                             "SPECTRUMS",
                             "SPECTRUM()",
                             "SPECTRUM1000HZ",
                             "SPECTRUM_",
                             "3",
                             "NONLOGPEAKS",
                             "nonLogPeaks",
                             "NonLogPeaks",
                             "NONLOGPEAKSFEATURE",
                             "PONDERATEDPEAKS",
                             "MEANMAX",
                             "MEANENERGYABOVETHRESH",
                             "???Feature_FeatureType???",
                             "???FEATURE_FEATURETYPE???",
                             "NEIGHBORHOODOFMAX",
                             "RATIOS",
                             "SP\xC3\x8B"
                             "CTRUM"}) {
        EXPECT_FALSE(AudioFeature::parseFeatureType(name).isValid()) << (name == nullptr ? "null" : name);
    }
}

TEST(FeatureCatalogue, ANameWithALetterMoreIsNoName) {
    for (const Type& type : c_types) {
        if (type.name == nullptr) {
            continue;
        }
        const std::string name(type.name);
        EXPECT_FALSE(AudioFeature::parseFeatureType((name + "X").c_str()).isValid()) << name;
        EXPECT_FALSE(AudioFeature::parseFeatureType(("X" + name).c_str()).isValid()) << name;
    }
}

}  // namespace
