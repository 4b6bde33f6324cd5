#include "features/ComputerArchive.h"

#include "Command.h"
#include "features/ArchiveShape.h"
#include "shell/SmallFile.h"

#include <murvane/audio/computation/AudioFeatureComputerImpl.h>

#include <boost/archive/polymorphic_binary_iarchive.hpp>
#include <boost/archive/polymorphic_binary_oarchive.hpp>
#include <boost/archive/polymorphic_text_iarchive.hpp>
#include <boost/archive/polymorphic_text_oarchive.hpp>
#include <boost/archive/polymorphic_xml_iarchive.hpp>
#include <boost/archive/polymorphic_xml_oarchive.hpp>
#include <boost/serialization/nvp.hpp>

#include <memory>
#include <sstream>

namespace Zantrix::Cli {

namespace {

namespace archive = boost::archive;

// What our XML archives call the computer; those of programs may call it otherwise.
constexpr const char* c_szItem = "computer";

template <class Archive>
std::unique_ptr<Math::FeatureComputer> load(const std::string& bytes) {
    std::istringstream stream(bytes);
    Archive archive(stream, archive::no_xml_tag_checking);
    Math::FeatureComputer* pLoaded = nullptr;
    static_cast<archive::polymorphic_iarchive&>(archive) >> boost::serialization::make_nvp(c_szItem, pLoaded);
    return std::unique_ptr<Math::FeatureComputer>(pLoaded);
}

template <class Archive>
std::string save(const StringVector& features) {
    Audio::FeatureComputerWithInputsImpl computer;
    for (const std::string& feature : features) {
        computer.addFeature(feature.c_str());
    }
    std::ostringstream stream;
    {
        const Math::FeatureComputer* const pComputer = &computer;
        Archive archive(stream);
        static_cast<archive::polymorphic_oarchive&>(archive) << boost::serialization::make_nvp(c_szItem, pComputer);
    }
    return stream.str();
}

// Null for what cannot be one.
std::unique_ptr<Math::FeatureComputer> loadAny(const std::string& bytes) {
    const ArchiveFormat format = findArchiveFormat(bytes);
    const auto fits = [&](const std::string& empty) { return hasShapeOf(format, bytes, empty); };
    if (format == ArchiveFormat::Text && fits(save<archive::polymorphic_text_oarchive>({}))) {
        return load<archive::polymorphic_text_iarchive>(bytes);
    }
    if (format == ArchiveFormat::Binary && fits(save<archive::polymorphic_binary_oarchive>({}))) {
        return load<archive::polymorphic_binary_iarchive>(bytes);
    }
    if (format == ArchiveFormat::Xml && fits(save<archive::polymorphic_xml_oarchive>({}))) {
        // On destruction, where nothing may be thrown, the archive reads to one more end of a tag and throws when there
        // is none: a damaged archive may have used up its own.
        return load<archive::polymorphic_xml_iarchive>(bytes + ">>>>");
    }
    return nullptr;
}

}  // namespace

std::vector<std::string> loadComputer(const std::string& path) {
    const std::string bytes = readSmallFile(path);
    std::unique_ptr<Math::FeatureComputer> pComputer;
    std::string why;
    try {
        pComputer = loadAny(bytes);
    } catch (const std::exception& error) {
        why = std::string(" (") + error.what() + ')';
    }
    const auto* pAudio = dynamic_cast<const Audio::FeatureComputerWithInputsImpl*>(pComputer.get());
    if (pAudio == nullptr) {
        throw UsageError(path + ": damaged, or not a text, binary or XML archive of an audio feature computer" + why);
    }
    const StringVector& names = pAudio->getFeatureNames();
    if (names.empty()) {
        throw UsageError(path + ": the archived feature computer has no features");
    }
    return {names.begin(), names.end()};
}

std::string archiveComputer(const std::vector<std::string>& features) {
    return save<archive::polymorphic_xml_oarchive>(StringVector(features.begin(), features.end()));
}

}  // namespace Zantrix::Cli
