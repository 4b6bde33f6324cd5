#include "Command.h"
#include "annotations/Actions.h"
#include "annotations/Defects.h"
#include "shell/AudioSet.h"
#include "shell/InputFile.h"
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
    "There is a line for each defect, with its place in the file in bytes, or \"FILE: no defects\". The exit code is "
    "1\n"
    "when there is any.\n";

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
    if (defects.findings.empty()) {
        text = file + ": no defects\n";
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
    std::string audioSet;
    po::options_description description("Options");
    description.add_options()("audioset", po::value(&audioSet)->value_name("LIST"),
                              "look at the files that this list names, too, behind the others");
    addCommonOptions(description, log);
    std::vector<std::string> files;
    const po::variables_map values = parseArguments(arguments, description, files);
    if (values.count("help") != 0) {
        printHelp(c_szUsage, description, c_szHelpRest);
        return AllDone;
    }
    if (files.empty() && audioSet.empty()) {
        throw UsageError("no file given");
    }
    Diagnostics diagnostics(log);
    bool isAllGood = audioSet.empty() || appendAudioSet(audioSet, files, diagnostics);
    Output output;
    output.open("");
    for (const std::string& file : files) {
        if (Interrupt::requested() || !output.getError().empty()) {
            break;
        }
        diagnostics.beginInput(file);
        isAllGood = validate(file, diagnostics, output) && isAllGood;
        diagnostics.endInput();
    }
    if (!output.commit()) {
        diagnostics.error(output.describeError());
        return SomeFailed;
    }
    return exitCodeOf(isAllGood && !Interrupt::requested());
}

}  // namespace Zantrix::Cli
