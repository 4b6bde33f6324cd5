#include <murvane/audio/computation/AudioFeatureComputerImpl.h>
#include <testkit/LogRecorder.h>

#include <boost/archive/archive_exception.hpp>
#include <boost/archive/polymorphic_binary_iarchive.hpp>
#include <boost/archive/polymorphic_binary_oarchive.hpp>
#include <boost/archive/polymorphic_text_iarchive.hpp>
#include <boost/archive/polymorphic_text_oarchive.hpp>
#include <boost/archive/polymorphic_xml_iarchive.hpp>
#include <boost/archive/polymorphic_xml_oarchive.hpp>
#include <boost/serialization/nvp.hpp>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <log4cplus/loglevel.h>

#include <memory>
#include <regex>
#include <sstream>
#include <string>
#include <vector>

using namespace Zantrix;
using boost::serialization::make_nvp;
using Math::DoubleVector;
using testing::Each;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::SizeIs;

namespace {

// The base that comes with no inputs, made whole.
class OwnInputs : public Audio::FeatureComputerImpl {
public:
    Cloneable* clone() const override { return nullptr; }
};

template <class Out, class In>
struct Format {
    // What the archive of `value`, an object or a pointer, holds.
    template <class T>
    static std::string saved(const T& value) {
        std::ostringstream stream;
        {
            Out archive(stream);
            static_cast<boost::archive::polymorphic_oarchive&>(archive) << make_nvp("computer", value);
        }
        return stream.str();
    }

    template <class T>
    static void load(const std::string& bytes, T& value) {
        std::istringstream stream(bytes);
        In archive(stream);
        static_cast<boost::archive::polymorphic_iarchive&>(archive) >> make_nvp("computer", value);
    }
};

using Text = Format<boost::archive::polymorphic_text_oarchive, boost::archive::polymorphic_text_iarchive>;
using Binary = Format<boost::archive::polymorphic_binary_oarchive, boost::archive::polymorphic_binary_iarchive>;
using Xml = Format<boost::archive::polymorphic_xml_oarchive, boost::archive::polymorphic_xml_iarchive>;

const StringVector c_names{"SPECTRUM500HZ", "zeroCrossingRate(8000)", "TEMPORALMEAN_MEAN_SPECTRUM", "MEAN"};

template <class Computer>
void addNames(Computer& computer) {
    for (const std::string& name : c_names) {
        EXPECT_TRUE(computer.addFeature(name.c_str())) << name;
    }
}

DoubleVector computed(Audio::FeatureComputerWithInputsImpl& computer) {
    DoubleVector window(64);
    for (std::size_t i = 0; i < window.size(); ++i) {
        window[i] = i % 3 == 0 ? -1.0 : 0.25;
    }
    EXPECT_TRUE(computer.setInput("Amplitude", window));
    DoubleVector out;
    EXPECT_TRUE(computer.computeFeatures(out));
    return out;
}

template <class T>
class ComputerArchives : public testing::Test {};

using Formats = testing::Types<Text, Binary, Xml>;
TYPED_TEST_SUITE(ComputerArchives, Formats);

TYPED_TEST(ComputerArchives, HoldTheNamesOfAComputerSavedByReference) {
    Audio::FeatureComputerWithInputsImpl computer;
    addNames(computer);
    Audio::FeatureComputerWithInputsImpl loaded;
    EXPECT_TRUE(loaded.addFeature("TEMPORALMEAN"));
    computed(loaded);
    TypeParam::load(TypeParam::saved(computer), loaded);
    EXPECT_EQ(loaded.getFeatureNames(), c_names);
    EXPECT_EQ(computed(loaded), computed(computer));
}

TYPED_TEST(ComputerArchives, HoldTheNamesOfAComputerWithoutInputsSavedByReference) {
    OwnInputs computer;
    addNames(computer);
    OwnInputs loaded;
    TypeParam::load(TypeParam::saved(static_cast<const Audio::FeatureComputerImpl&>(computer)),
                    static_cast<Audio::FeatureComputerImpl&>(loaded));
    EXPECT_EQ(loaded.getFeatureNames(), c_names);
    EXPECT_TRUE(loaded.addFeature("MEAN_SPECTRUM"));
}

TYPED_TEST(ComputerArchives, HoldTheEmptyList) {
    const Audio::FeatureComputerWithInputsImpl computer;
    Audio::FeatureComputerWithInputsImpl loaded;
    addNames(loaded);
    TypeParam::load(TypeParam::saved(computer), loaded);
    EXPECT_THAT(loaded.getFeatureNames(), IsEmpty());
    EXPECT_THAT(computed(loaded), IsEmpty());
}

template <class Format, class Base>
void expectPointerRoundTrip() {
    Audio::FeatureComputerWithInputsImpl computer;
    addNames(computer);
    const Base* const pSaved = &computer;
    const std::string bytes = Format::saved(pSaved);
    Base* pLoaded = nullptr;
    Format::load(bytes, pLoaded);
    ASSERT_NE(pLoaded, nullptr);
    const std::unique_ptr<Base> pOwned(pLoaded);
    auto* pComputer = dynamic_cast<Audio::FeatureComputerWithInputsImpl*>(pLoaded);
    ASSERT_NE(pComputer, nullptr);
    EXPECT_NE(pComputer, &computer);
    EXPECT_EQ(pComputer->getFeatureNames(), c_names);
    EXPECT_EQ(computed(*pComputer), computed(computer));
    // Its pool was given the audio factory before anything was loaded.
    const std::unique_ptr<Math::SignalFeature> pFeature(pComputer->getFeaturePool().getNewFeature("SPECTRUM100HZ"));
    EXPECT_NE(pFeature, nullptr);
    EXPECT_TRUE(pComputer->addFeature("MEAN_SPECTRUM"));
}

TYPED_TEST(ComputerArchives, LoadThroughAPointerToTheComputer) {
    expectPointerRoundTrip<TypeParam, Audio::FeatureComputerWithInputsImpl>();
}

TYPED_TEST(ComputerArchives, LoadThroughAPointerToFeatureComputer) {
    expectPointerRoundTrip<TypeParam, Math::FeatureComputer>();
}

TYPED_TEST(ComputerArchives, LoadThroughAPointerToFeatureComputerWithInputs) {
    expectPointerRoundTrip<TypeParam, Math::FeatureComputerWithInputs>();
}

TYPED_TEST(ComputerArchives, LoadThroughAPointerToTheMathematicalComputer) {
    expectPointerRoundTrip<TypeParam, Math::FeatureComputerImpl>();
}

TYPED_TEST(ComputerArchives, SavedThroughOneBaseLoadThroughAnother) {
    Audio::FeatureComputerWithInputsImpl computer;
    addNames(computer);
    const Math::FeatureComputerWithInputs* const pSaved = &computer;
    Math::FeatureComputer* pLoaded = nullptr;
    TypeParam::load(TypeParam::saved(pSaved), pLoaded);
    const std::unique_ptr<Math::FeatureComputer> pOwned(pLoaded);
    auto* pComputer = dynamic_cast<Audio::FeatureComputerWithInputsImpl*>(pLoaded);
    ASSERT_NE(pComputer, nullptr);
    EXPECT_EQ(pComputer->getFeatureNames(), c_names);
}

TYPED_TEST(ComputerArchives, HoldTheMathematicalComputerWithInputs) {
    Math::FeatureComputerWithInputsImpl computer;
    EXPECT_TRUE(computer.addFeature("TEMPORALMEAN_MEAN"));
    const Math::FeatureComputerImpl* const pSaved = &computer;
    Math::FeatureComputerImpl* pLoaded = nullptr;
    TypeParam::load(TypeParam::saved(pSaved), pLoaded);
    const std::unique_ptr<Math::FeatureComputerImpl> pOwned(pLoaded);
    EXPECT_NE(dynamic_cast<Math::FeatureComputerWithInputsImpl*>(pLoaded), nullptr);
    EXPECT_EQ(dynamic_cast<Audio::FeatureComputerWithInputsImpl*>(pLoaded), nullptr);
    EXPECT_THAT(pLoaded->getFeatureNames(), ElementsAre("TEMPORALMEAN_MEAN"));
}

TYPED_TEST(ComputerArchives, LoadedThroughAPointerConstructByDefault) {
    const std::unique_ptr<Math::FeatureComputer> pSaved = std::make_unique<Audio::FeatureComputerWithInputsImpl>();
    const Math::FeatureComputer* const pComputer = pSaved.get();
    const std::string bytes = TypeParam::saved(pComputer);
    Math::FeatureComputer* pLoaded = nullptr;
    const testkit::LogRecorder log(log4cplus::TRACE_LOG_LEVEL, "murvane.audio.FeatureComputerImpl");
    TypeParam::load(bytes, pLoaded);
    const std::unique_ptr<Math::FeatureComputer> pOwned(pLoaded);
    ASSERT_THAT(log.records(), SizeIs(2));
    EXPECT_EQ(log.records()[0].message, "ENTER: FeatureComputerWithInputsImpl ctor");
    EXPECT_EQ(log.records()[1].message, "EXIT:  FeatureComputerWithInputsImpl ctor");
}

TYPED_TEST(ComputerArchives, ATruncatedOneThrowsAndLeavesTheComputerAsItWas) {
    Audio::FeatureComputerWithInputsImpl computer;
    addNames(computer);
    const std::string bytes = TypeParam::saved(computer);
    const std::size_t firstName = bytes.find(c_names.front());
    ASSERT_NE(firstName, std::string::npos);
    Audio::FeatureComputerWithInputsImpl loaded;
    EXPECT_TRUE(loaded.addFeature("TEMPORALMEAN_RANGE(0,1)"));
    EXPECT_THAT(computed(loaded), ElementsAre(-1.0));
    EXPECT_THROW(TypeParam::load(bytes.substr(0, firstName + 3), loaded), boost::archive::archive_exception);
    EXPECT_THAT(loaded.getFeatureNames(), ElementsAre("TEMPORALMEAN_RANGE(0,1)"));
    DoubleVector out;
    EXPECT_TRUE(loaded.setInput("Amplitude", DoubleVector{2.0}));
    EXPECT_TRUE(loaded.computeFeatures(out));
    EXPECT_THAT(out, ElementsAre(0.5));
}

TYPED_TEST(ComputerArchives, ALoadedNameThatIsUnknownFailsWhenComputed) {
    // As an archive of a program with a factory of its own.
    Audio::FeatureComputerWithInputsImpl computer;
    computer.setInput("loud", DoubleVector{1.0, 2.0});
    EXPECT_TRUE(computer.addFeature("MEAN_loud"));
    Audio::FeatureComputerWithInputsImpl loaded;
    TypeParam::load(TypeParam::saved(computer), loaded);
    EXPECT_TRUE(loaded.setInput("Amplitude", DoubleVector{5.0}));
    DoubleVector out{-1.0};
    const testkit::LogRecorder log;
    EXPECT_FALSE(loaded.computeFeatures(out));
    EXPECT_THAT(out, IsEmpty());
    EXPECT_THAT(log.records(),
                ElementsAre(testkit::LogRecord{"murvane.math.FeatureComputerImpl", log4cplus::ERROR_LOG_LEVEL,
                                               "Unknown feature MEAN_loud", "MathFeatureComputerImpl"}));
    EXPECT_TRUE(loaded.setInput("loud", DoubleVector{3.0}));
    EXPECT_TRUE(loaded.computeFeatures(out));
    EXPECT_THAT(out, ElementsAre(3.0));
}

// The names of the items of an XML archive, in the order in which they open.
std::vector<std::string> itemsOf(const std::string& xml) {
    static const std::regex tag("<([A-Za-z_][A-Za-z0-9_.-]*)");
    std::vector<std::string> items;
    for (std::sregex_iterator it(xml.begin(), xml.end(), tag), end; it != end; ++it) {
        items.push_back((*it)[1]);
    }
    return items;
}

std::vector<std::string> attributesOf(const std::string& xml, const std::string& name) {
    const std::regex attribute(" " + name + "=\"([^\"]*)\"");
    std::vector<std::string> values;
    for (std::sregex_iterator it(xml.begin(), xml.end(), attribute), end; it != end; ++it) {
        values.push_back((*it)[1]);
    }
    return values;
}

void expectOneItem(const std::string& xml, const std::string& className) {
    EXPECT_THAT(itemsOf(xml), ElementsAre("boost_serialization", "computer", "MathFeatureComputerImpl",
                                          "m_vFeatureNames", "count", "item_version", "item", "item"))
        << xml;
    std::vector<std::string> versions = attributesOf(xml, "version");
    ASSERT_THAT(versions, SizeIs(5));
    versions.erase(versions.begin(), versions.begin() + 2);  // of XML and of the archive format
    EXPECT_THAT(versions, Each("0")) << xml;
    if (!className.empty()) {
        EXPECT_THAT(attributesOf(xml, "class_name"), ElementsAre(className)) << xml;
    }
}

TEST(ComputerArchive, HoldsTheMathematicalBaseAndNothingElse) {
    Audio::FeatureComputerWithInputsImpl computer;
    EXPECT_TRUE(computer.addFeature("SPECTRUM"));
    EXPECT_TRUE(computer.addFeature("MEAN_SPECTRUM"));
    computer.setInput("Amplitude", DoubleVector(64, 1.0));  // neither inputs nor memories are archived
    DoubleVector out;
    EXPECT_TRUE(computer.computeFeatures(out));
    expectOneItem(Xml::saved(computer), "");
    const Math::FeatureComputer* const pComputer = &computer;
    expectOneItem(Xml::saved(pComputer), "AudioFeatureComputerWithInputsImpl");

    OwnInputs ownInputs;
    EXPECT_TRUE(ownInputs.addFeature("SPECTRUM"));
    EXPECT_TRUE(ownInputs.addFeature("MEAN_SPECTRUM"));
    expectOneItem(Xml::saved(static_cast<const Audio::FeatureComputerImpl&>(ownInputs)), "");
}

TEST(ComputerArchive, HoldsTheNamesAsTheyWereAdded) {
    Audio::FeatureComputerWithInputsImpl computer;
    EXPECT_TRUE(computer.addFeature("range( 0 , 2 )_Spectrum()"));
    EXPECT_THAT(Xml::saved(computer), HasSubstr("<item>range( 0 , 2 )_Spectrum()</item>"));
}

TEST(ComputerArchive, ClassesHaveTheirKeysAndVersionZero) {
    using boost::serialization::guid;
    using boost::serialization::version;
    EXPECT_STREQ(guid<Audio::FeatureComputerImpl>(), "AudioFeatureComputerImpl");
    EXPECT_STREQ(guid<Audio::FeatureComputerWithInputsImpl>(), "AudioFeatureComputerWithInputsImpl");
    EXPECT_STREQ(guid<Math::FeatureComputerImpl>(), "MathFeatureComputerImpl");
    EXPECT_EQ(version<Audio::FeatureComputerImpl>::value, 0);
    EXPECT_EQ(version<Audio::FeatureComputerWithInputsImpl>::value, 0);
    EXPECT_EQ(version<Math::FeatureComputerImpl>::value, 0);
}

}  // namespace
