#include "ComputerArchive.h"

#include "Command.h"
#include "SmallFile.h"

#include <murvane/audio/computation/AudioFeatureComputerImpl.h>

#include <boost/archive/polymorphic_binary_iarchive.hpp>
#include <boost/archive/polymorphic_text_iarchive.hpp>
#include <boost/archive/polymorphic_xml_iarchive.hpp>
#include <boost/archive/polymorphic_xml_oarchive.hpp>
#include <boost/serialization/nvp.hpp>

#include <memory>
#include <sstream>

namespace Zantrix::Cli {

namespace {

// What XML archives call the computer; others call it nothing, and loading does not look.
constexpr const char* c_szItem = "computer";

// Every archive begins with this text in its own encoding: text with its length in digits, binary with it in eight
// bytes.
constexpr std::string_view c_strSignature = "serialization::archive";

enum class Format { None, Text, Binary, Xml };

Format findFormat(const std::string& bytes) {
    if (bytes.rfind("<?xml", 0) == 0) {
        return Format::Xml;
    }
    const std::string length = std::to_string(c_strSignature.size()) + ' ';
    if (bytes.compare(0, length.size(), length) == 0 &&
        bytes.compare(length.size(), c_strSignature.size(), c_strSignature) == 0) {
        return Format::Text;
    }
    std::string binaryLength(sizeof(std::uint64_t), '\0');
    binaryLength.front() = static_cast<char>(c_strSignature.size());
    if (bytes.compare(0, binaryLength.size(), binaryLength) == 0 &&
        bytes.compare(binaryLength.size(), c_strSignature.size(), c_strSignature) == 0) {
        return Format::Binary;
    }
    return Format::None;
}

template <class Archive>
std::unique_ptr<Math::FeatureComputer> load(const std::string& bytes) {
    std::istringstream stream(bytes);
    Archive archive(stream);
    Math::FeatureComputer* pLoaded = nullptr;
    static_cast<boost::archive::polymorphic_iarchive&>(archive) >> boost::serialization::make_nvp(c_szItem, pLoaded);
    return std::unique_ptr<Math::FeatureComputer>(pLoaded);
}

std::unique_ptr<Math::FeatureComputer> load(Format format, const std::string& bytes) {
    switch (format) {
        case Format::Text:
            return load<boost::archive::polymorphic_text_iarchive>(bytes);
        case Format::Binary:
            return load<boost::archive::polymorphic_binary_iarchive>(bytes);
        case Format::Xml:
            return load<boost::archive::polymorphic_xml_iarchive>(bytes);
        case Format::None:
            break;
    }
    return nullptr;
}

}  // namespace

std::vector<std::string> loadComputer(const std::string& path) {
    const std::string bytes = readSmallFile(path);
    const Format format = findFormat(bytes);
    if (format == Format::None) {
        throw UsageError(path + ": not an archive of a feature computer (text, binary or XML)");
    }
    std::unique_ptr<Math::FeatureComputer> pComputer;
    try {
        pComputer = load(format, bytes);
    } catch (const std::exception& error) {
        throw UsageError(path + ": damaged, or not an archive of a feature computer: " + error.what());
    }
    const auto* pAudio = dynamic_cast<const Audio::FeatureComputerWithInputsImpl*>(pComputer.get());
    if (pAudio == nullptr) {
        throw UsageError(path + ": the archive does not hold an audio feature computer");
    }
    const StringVector& names = pAudio->getFeatureNames();
    if (names.empty()) {
        throw UsageError(path + ": the archived feature computer has no features");
    }
    return {names.begin(), names.end()};
}

std::string archiveComputer(const std::vector<std::string>& features) {
    Audio::FeatureComputerWithInputsImpl computer;
    for (const std::string& feature : features) {
        computer.addFeature(feature.c_str());
    }
    std::ostringstream stream;
    {
        const Math::FeatureComputer* const pComputer = &computer;
        boost::archive::polymorphic_xml_oarchive archive(stream);
        static_cast<boost::archive::polymorphic_oarchive&>(archive)
            << boost::serialization::make_nvp(c_szItem, pComputer);
    }
    return stream.str();
}

}  // namespace Zantrix::Cli
