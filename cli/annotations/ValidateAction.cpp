#include "Command.h"
#include "annotations/Actions.h"
#include "annotations/Defects.h"
#include "shell/InputFile.h"
#include "shell/InputNames.h"
#include "shell/Interrupt.h"
#include "shell/Output.h"

#include <fstream>

namespace po = boost::program_options;

namespace Zantrix::Cli {

namespace {

constexpr const char* c_szUsage =
    "Usage: murvane-audio annotations validate FILE... [--audioset LIST] [OPTION]...\n"
    "Tells what is wrong with the chunks of WAV files. Nothing is repaired.\n";

constexpr const char* c_szHelpRest =
    "There is a line for each defect, with its place in the file in bytes, or \"FILE: no defects\". The exit code is\n"
    "1 when there is any. That audio cannot be annotated, as it is not mono or is compressed, is told, but is none.\n\n"
    "An audio set is a text file with the name of one file on each line, as 'murvane-audio info --help' tells.\n"
    "In place of a FILE, '-' takes such lines from standard input.\n";

/// Says what there is to say of one file, in lines.
///
/// @return whether it has no defects
bool describe(const std::string& file, const IFF::IFFParser& parser, std::string& text) {
    if (!parser.isValid()) {
        text = file + ": " + parser.getError() + '\n';
        return false;
    }
    const Defects defects = findDefects(parser);
    for (const IFF::Finding& finding : defects.findings) {
        text += file + ": offset " + std::to_string(finding.uiOffset) + ": " + finding.strText + '\n';
    }
    if (defects.omitted > 0) {
        text += file + ": and " + std::to_string(defects.omitted) + " more\n";
    }
    const std::string obstacle = defects.obstacle.empty() ? "" : "cannot be annotated: " + defects.obstacle;
    if (defects.findings.empty()) {
        text = file + ": no defects" + (obstacle.empty() ? "" : "; ") + obstacle + '\n';
    } else if (!obstacle.empty()) {
        text += file + ": " + obstacle + '\n';
    }
    return defects.findings.empty();
}

bool validate(const std::string& file, Diagnostics& diagnostics, Output& output) {
    if (!checkNotEmpty(file, diagnostics)) {
        return false;
    }
    IFF::IFFParser parser;
    std::ifstream is(file, std::ios::binary);
    parser.read(is);
    std::string text;
    const bool isGood = describe(file, parser, text);
    return output.write(text.data(), text.size()) && isGood;
}

}  // namespace

int runAnnotationsValidate(const std::vector<std::string>& arguments) {
    LogOptions log;
    InputArguments inputArguments;
    po::options_description description("Options");
    addInputOptions(description, inputArguments);
    addCommonOptions(description, log);
    const po::variables_map values = parseArguments(arguments, description, inputArguments.files);
    inputArguments.behindDashes = countBehindDashes(arguments);
    if (values.count("help") != 0) {
        printHelp(c_szUsage, description, c_szHelpRest);
        return AllDone;
    }
    if (inputArguments.isEmpty()) {
        throw UsageError("no file given");
    }
    Diagnostics diagnostics(log);
    InputNames inputs;
    const bool areListsRead = inputs.gather(inputArguments, diagnostics);
    if (inputs.isEmpty() && !Interrupt::requested()) {
        diagnostics.error("no file to process");
        return SomeFailed;
    }
    Output output;
    output.open("");
    const bool isAllGood = forEachFile(inputs, output, diagnostics,
                                       [&](const std::string& file) { return validate(file, diagnostics, output); });
    if (!output.commit()) {
        if (!Output::hasReaderGone()) {
            diagnostics.error(output.describeError());
        }
        return SomeFailed;
    }
    return exitCodeOf(isAllGood && areListsRead);
}

}  // namespace Zantrix::Cli
