#include "Command.h"
#include "annotations/Actions.h"
#include "annotations/LabelFormat.h"
#include "shell/InputFile.h"

#include <fstream>
#include <iterator>
#include <optional>

namespace po = boost::program_options;

namespace Zantrix::Cli {

namespace {

constexpr const char* c_szUsage =
    "Usage: murvane-audio annotations import FILE LABELS [--format FORMAT] [OPTION]...\n"
    "Replaces the annotations of FILE by those of a label file.\n";

constexpr const char* c_szHelpRest =
    "The formats are audacity (.txt), csv (.csv, with the columns start_s, stop_s and label), json (.json) and "
    "textgrid\n"
    "(.TextGrid, long or short, UTF-8 or UTF-16); the extension tells which, unless --format does. In a TextGrid,\n"
    "intervals without text are gaps, and points become annotations without length.\n\n"
    "If an annotation starts beyond the end of the audio, nothing is done; one that ends there is cut off, with a\n"
    "warning.\n\n"
    "Examples:\n"
    "  murvane-audio annotations import call.wav labels.txt --dry-run\n"
    "  murvane-audio annotations import call.wav call.TextGrid --tier words --append\n";

// A million annotations take 40 MB. A device that never ends must not take all memory.
constexpr std::size_t c_uiMaxSize = std::size_t(1) << 28;

bool readBytes(const std::string& path, Diagnostics& diagnostics, std::string& bytes) {
    if (!checkReadable(path, diagnostics)) {
        return false;
    }
    std::ifstream is(path, std::ios::binary);
    std::vector<char> piece(std::size_t(1) << 16);
    do {
        is.read(piece.data(), static_cast<std::streamsize>(piece.size()));
        bytes.append(piece.data(), static_cast<std::size_t>(is.gcount()));
    } while (is && bytes.size() <= c_uiMaxSize);
    if (bytes.size() > c_uiMaxSize) {
        diagnostics.error("is longer than " + std::to_string(c_uiMaxSize) + " bytes");
    } else if (is.bad() || !is.eof()) {
        diagnostics.error("cannot be read");
    }
    return bytes.size() <= c_uiMaxSize && is.eof() && !is.bad();
}

struct LabelFile {
    std::vector<TimedLabel> labels;
    bool isEmpty = false;  ///< there is not a byte in it
};

std::optional<LabelFile> readLabels(const std::string& path, const LabelFormat& format,
                                    const std::vector<std::string>& tiers, Diagnostics& diagnostics) {
    std::string bytes;
    std::optional<LabelFile> file;
    diagnostics.beginInput(path);
    if (readBytes(path, diagnostics, bytes)) {
        try {
            file = LabelFile{format.read(bytes, tiers), bytes.empty()};
        } catch (const LabelError& error) {
            diagnostics.error(std::string("cannot be read as ") + format.name + ": " + error.what());
        }
    }
    diagnostics.endInput();
    return file;
}

/// Whether these labels may take the place of those annotations. None at all may be a label file that was never
/// written.
bool mayReplace(const std::vector<SampledLabel>& annotations, const LabelFile& file, const std::string& path,
                Diagnostics& diagnostics) {
    if (annotations.empty() || !file.labels.empty()) {
        return true;
    }
    const std::string replaced = counted(annotations.size(), "annotation");
    if (file.isEmpty) {
        diagnostics.error(path + " is empty, which is no label file to replace " + replaced +
                          " by; 'murvane-audio annotations clear' removes them");
    } else {
        diagnostics.warning(path + " holds no annotations; " + replaced + " replaced by none");
    }
    return !file.isEmpty;
}

}  // namespace

int runAnnotationsImport(const std::vector<std::string>& arguments) {
    EditOptions options;
    std::string formatName;
    std::vector<std::string> tiers;
    bool appends = false;
    po::options_description description("Options");
    description.add_options()  //
        ("format", po::value(&formatName)->value_name("FORMAT"),
         "of the label file: audacity, csv, json or textgrid")  //
        ("tier", po::value(&tiers)->value_name("NAME"),
         "take only this tier of a TextGrid; may be given again")  //
        ("append", po::bool_switch(&appends),
         "keep the annotations that the file has, and add those of the label file");
    addEditOptions(description, options);
    std::vector<std::string> files;
    const po::variables_map values = parseArguments(arguments, description, files);
    if (values.count("help") != 0) {
        printHelp(c_szUsage, description, c_szHelpRest);
        return AllDone;
    }
    demandOperands(files, 2, "FILE and LABELS");
    const LabelFormat& format = chooseLabelFormat(formatName, files[1]);
    if (!tiers.empty() && !format.hasTiers) {
        throw UsageError(std::string("--tier goes with textgrid only; the format is ") + format.name);
    }
    Diagnostics diagnostics(options.log);
    const auto labelFile = readLabels(files[1], format, tiers, diagnostics);
    if (!labelFile) {
        return SomeFailed;
    }
    return editFile(files[0], options, diagnostics, [&](AnnotationEdit& edit) {
        if (!appends) {
            if (!mayReplace(edit.annotations(), *labelFile, files[1], diagnostics)) {
                return false;
            }
            edit.clear();
        }
        return edit.append(labelFile->labels, files[1] + ": ");
    });
}

}  // namespace Zantrix::Cli
