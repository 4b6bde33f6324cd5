#include <murvane/audio/input/AudioLinearWindower.h>

#include <boost/archive/polymorphic_binary_iarchive.hpp>
#include <boost/archive/polymorphic_binary_oarchive.hpp>
#include <boost/archive/polymorphic_text_iarchive.hpp>
#include <boost/archive/polymorphic_text_oarchive.hpp>
#include <boost/archive/polymorphic_xml_iarchive.hpp>
#include <boost/archive/polymorphic_xml_oarchive.hpp>
#include <boost/serialization/extended_type_info.hpp>
#include <boost/serialization/nvp.hpp>
#include <boost/serialization/version.hpp>
#include <gmock/gmock.h>

#include <cstdint>
#include <limits>
#include <memory>
#include <sstream>
#include <string>

namespace {

using boost::archive::polymorphic_iarchive;
using boost::archive::polymorphic_oarchive;
using boost::serialization::make_nvp;
using testing::HasSubstr;
using Config = Zantrix::Audio::LinearAudioWindower::Config;

Config sample() {
    Config config;
    config.m_uiSampleRate = 11025;
    config.m_uiWindowSizeMs = std::numeric_limits<std::uint64_t>::max();
    config.m_uiWindowOverlapMs = (std::uint64_t{1} << 32) + 1;
    config.m_bSuppressDCOffset = true;
    return config;
}

void expectEqual(const Config& a, const Config& b) {
    EXPECT_EQ(a.m_uiSampleRate, b.m_uiSampleRate);
    EXPECT_EQ(a.m_uiWindowSizeMs, b.m_uiWindowSizeMs);
    EXPECT_EQ(a.m_uiWindowOverlapMs, b.m_uiWindowOverlapMs);
    EXPECT_EQ(a.m_bSuppressDCOffset, b.m_bSuppressDCOffset);
}

struct Text {
    using Output = boost::archive::polymorphic_text_oarchive;
    using Input = boost::archive::polymorphic_text_iarchive;
};

struct Binary {
    using Output = boost::archive::polymorphic_binary_oarchive;
    using Input = boost::archive::polymorphic_binary_iarchive;
};

struct Xml {
    using Output = boost::archive::polymorphic_xml_oarchive;
    using Input = boost::archive::polymorphic_xml_iarchive;
};

template <typename Format, typename T>
std::string saved(const T& value) {
    std::ostringstream os;
    {
        typename Format::Output output(os);
        polymorphic_oarchive& archive = output;
        archive << make_nvp("config", value);
    }
    return os.str();
}

template <typename Format, typename T>
void load(const std::string& bytes, T& value) {
    std::istringstream is(bytes);
    typename Format::Input input(is);
    polymorphic_iarchive& archive = input;
    archive >> make_nvp("config", value);
}

template <typename Format>
class WindowerConfigArchive : public testing::Test {};

using Formats = testing::Types<Text, Binary, Xml>;
TYPED_TEST_SUITE(WindowerConfigArchive, Formats);

TYPED_TEST(WindowerConfigArchive, RestoresAConfiguration) {
    for (const Config& config : {sample(), Config()}) {
        Config restored = sample();
        load<TypeParam>(saved<TypeParam>(config), restored);
        expectEqual(restored, config);
    }
}

TYPED_TEST(WindowerConfigArchive, RestoresAConfigurationBehindAPointer) {
    const Config config = sample();
    const Config* const pConfig = &config;
    Config* pRestored = nullptr;
    load<TypeParam>(saved<TypeParam>(pConfig), pRestored);
    ASSERT_NE(pRestored, nullptr);
    const std::unique_ptr<Config> owner(pRestored);
    expectEqual(*pRestored, config);
}

TYPED_TEST(WindowerConfigArchive, RestoresWhatAWindowerWasConfiguredWith) {
    Zantrix::Audio::LinearAudioWindower windower;
    Config config;
    config.m_uiWindowOverlapMs = 6;
    ASSERT_TRUE(windower.configure(config));
    Config restored;
    load<TypeParam>(saved<TypeParam>(windower.getConfig()), restored);
    expectEqual(restored, config);
}

TEST(WindowerConfigXml, NamesItsFieldsInTheirOrder) {
    const std::string xml = saved<Xml>(sample());
    EXPECT_THAT(xml, HasSubstr("\t<m_uiSampleRate>11025</m_uiSampleRate>\n"
                               "\t<m_uiWindowSizeMs>18446744073709551615</m_uiWindowSizeMs>\n"
                               "\t<m_uiWindowOverlapMs>4294967297</m_uiWindowOverlapMs>\n"
                               "\t<m_bSuppressDCOffset>1</m_bSuppressDCOffset>\n"
                               "</config>\n"));
    EXPECT_THAT(xml, HasSubstr("<config class_id=\"0\" tracking_level=\"1\" version=\"0\""));
}

TEST(WindowerConfigXml, IsReadWhenWrittenByHand) {
    Config config;
    load<Xml>(
        "<?xml version=\"1.0\" encoding=\"UTF-8\" standalone=\"yes\" ?>\n"
        "<!DOCTYPE boost_serialization>\n"
        "<boost_serialization signature=\"serialization::archive\" version=\"19\">\n"
        "<config class_id=\"0\" tracking_level=\"1\" version=\"0\" object_id=\"_0\">\n"
        "<m_uiSampleRate>16000</m_uiSampleRate><m_uiWindowSizeMs>32</m_uiWindowSizeMs>\n"
        "<m_uiWindowOverlapMs>8</m_uiWindowOverlapMs><m_bSuppressDCOffset>1</m_bSuppressDCOffset>\n"
        "</config>\n</boost_serialization>\n",
        config);
    EXPECT_EQ(config.m_uiSampleRate, 16000u);
    EXPECT_EQ(config.m_uiWindowSizeMs, 32u);
    EXPECT_EQ(config.m_uiWindowOverlapMs, 8u);
    EXPECT_TRUE(config.m_bSuppressDCOffset);
}

TEST(WindowerConfigClass, IsExportedUnderItsKeyInVersion0) {
    EXPECT_STREQ(boost::serialization::guid<Config>(), "LinearAudioWindowerConfig");
    EXPECT_EQ(boost::serialization::version<Config>::value, 0);
    const auto* pType = boost::serialization::extended_type_info::find("LinearAudioWindowerConfig");
    ASSERT_NE(pType, nullptr) << "registered when the library was loaded";
    EXPECT_STREQ(pType->get_key(), "LinearAudioWindowerConfig");
}

}  // namespace
