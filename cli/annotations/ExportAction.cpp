#include "Command.h"
#include "annotations/Actions.h"
#include "annotations/LabelFormat.h"
#include "shell/InputFile.h"
#include "shell/Output.h"

namespace po = boost::program_options;

namespace Zantrix::Cli {

namespace {

constexpr const char* c_szUsage =
    "Usage: murvane-audio annotations export FILE [--format FORMAT] [--output LABELS] [OPTION]...\n"
    "Writes the annotations of FILE as a label file.\n";

constexpr const char* c_szHelpRest =
    "The formats are audacity (.txt), csv (.csv), json (.json) and textgrid (.TextGrid). The extension of LABELS "
    "tells\n"
    "which, unless --format does; without --output, --format is needed. Times have as many decimals as tell each "
    "sample\n"
    "from the next, so importing gives the same samples again. A label that the format cannot hold is an error that\n"
    "names the annotation.\n\n"
    "Examples:\n"
    "  murvane-audio annotations export call.wav --output call.txt\n"
    "  murvane-audio annotations export call.wav --format json\n";

bool writeLabels(const std::string& file, const LabelFormat& format, const ReadOptions& options,
                 const std::string& path, Diagnostics& diagnostics) {
    Recording recording;
    if (!readRecording(file, options, diagnostics, recording)) {
        return false;
    }
    if (recording.rate == 0) {
        diagnostics.error("its sample rate is 0, so its annotations have no times");
        return false;
    }
    std::string text;
    try {
        text = format.write(recording);
    } catch (const LabelError& error) {
        diagnostics.error(std::string("cannot be written as ") + format.name + ": " + error.what());
        return false;
    }
    Output output;
    if (output.open(path) && output.write(text.data(), text.size()) && output.commit()) {
        return true;
    }
    if (!Output::hasReaderGone()) {
        diagnostics.error(output.describeError());
    }
    return false;
}

}  // namespace

int runAnnotationsExport(const std::vector<std::string>& arguments) {
    LogOptions log;
    ReadOptions options;
    std::string formatName;
    std::string path;
    po::options_description description("Options");
    description.add_options()                                                                        //
        ("format", po::value(&formatName)->value_name("FORMAT"), "audacity, csv, json or textgrid")  //
        ("output,o", po::value(&path)->value_name("LABELS"),
         "write to this file, which appears only when it is complete, instead of standard output");
    addReadOptions(description, options);
    addCommonOptions(description, log);
    std::vector<std::string> files;
    const po::variables_map values = parseArguments(arguments, description, files);
    if (values.count("help") != 0) {
        printHelp(c_szUsage, description, c_szHelpRest);
        return AllDone;
    }
    demandOperands(files, 1, "FILE");
    const LabelFormat& format = chooseLabelFormat(formatName, path);
    refuseToOverwrite(files, path);
    Diagnostics diagnostics(log);
    diagnostics.beginInput(files.front());
    const bool isDone = writeLabels(files.front(), format, options, path, diagnostics);
    diagnostics.endInput();
    return exitCodeOf(isDone);
}

}  // namespace Zantrix::Cli
