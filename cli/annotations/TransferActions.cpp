#include "Command.h"
#include "annotations/Actions.h"

namespace po = boost::program_options;

namespace Zantrix::Cli {

namespace {

constexpr const char* c_szCopyUsage =
    "Usage: murvane-audio annotations copy FROM TO [OPTION]...\n"
    "Replaces the annotations of TO by those of FROM.\n";

constexpr const char* c_szAppendUsage =
    "Usage: murvane-audio annotations append FROM TO [OPTION]...\n"
    "Adds the annotations of FROM behind those of TO.\n";

constexpr const char* c_szHelpRest =
    "Both are mono WAV files; where their rates differ, times are kept and rounded to samples of TO. If an annotation\n"
    "starts beyond the end of TO, nothing is done; one that ends there is cut off, with a warning.\n";

int transfer(const std::vector<std::string>& arguments, const char* usage, bool replaces) {
    EditOptions options;
    po::options_description description("Options");
    addEditOptions(description, options);
    std::vector<std::string> files;
    const po::variables_map values = parseArguments(arguments, description, files);
    if (values.count("help") != 0) {
        printHelp(usage, description, c_szHelpRest);
        return AllDone;
    }
    demandOperands(files, 2, "FROM and TO");
    Diagnostics diagnostics(options.log);
    Recording from;
    diagnostics.beginInput(files[0]);
    const bool isRead = readRecording(files[0], options.read, diagnostics, from);
    const bool hasTimes = from.rate > 0 || from.annotations.empty();
    if (isRead && !hasTimes) {
        diagnostics.error("its sample rate is 0, so its annotations have no times");
    }
    diagnostics.endInput();
    if (!isRead || !hasTimes) {
        return SomeFailed;
    }
    std::vector<TimedLabel> labels;
    for (const SampledLabel& annotation : from.annotations) {
        labels.push_back(toTimes(annotation, from.rate));
    }
    return editFile(files[1], options, diagnostics, [&](AnnotationEdit& edit) {
        if (replaces) {
            edit.clear();
        }
        return edit.append(labels, files[0] + ": ");
    });
}

}  // namespace

int runAnnotationsCopy(const std::vector<std::string>& arguments) {
    return transfer(arguments, c_szCopyUsage, true);
}

int runAnnotationsAppend(const std::vector<std::string>& arguments) {
    return transfer(arguments, c_szAppendUsage, false);
}

}  // namespace Zantrix::Cli
