#include "Command.h"
#include "annotations/Actions.h"

#include <murvane/core/BoostRegex.h>

#include <optional>
#include <stdexcept>

namespace po = boost::program_options;

namespace Zantrix::Cli {

namespace {

constexpr const char* c_szUsage =
    "Usage: murvane-audio annotations clear FILE [--label REGEX] [OPTION]...\n"
    "Removes annotations: all, or those with certain labels.\n";

constexpr const char* c_szHelpRest =
    "The expression has Perl's syntax, must match the whole label, and does not tell upper from lower case. Without "
    "it,\n"
    "what is left of annotations in the file goes, too: labels without cue points, and notes.\n\n"
    "Examples:\n"
    "  murvane-audio annotations clear call.wav --label 'SF_.*' --dry-run\n"
    "  murvane-audio annotations clear call.wav --backup\n";

BoostRegex compile(const std::string& expression) {
    try {
        return BoostRegex(expression.c_str());
    } catch (const std::runtime_error& error) {
        throw UsageError("--label " + expression + " is no regular expression: " + error.what());
    }
}

}  // namespace

int runAnnotationsClear(const std::vector<std::string>& arguments) {
    EditOptions options;
    std::string label;
    po::options_description description("Options");
    description.add_options()("label", po::value(&label)->value_name("REGEX"),
                              "remove only annotations whose whole label matches this expression");
    addEditOptions(description, options);
    std::vector<std::string> files;
    const po::variables_map values = parseArguments(arguments, description, files);
    if (values.count("help") != 0) {
        printHelp(c_szUsage, description, c_szHelpRest);
        return AllDone;
    }
    demandOperands(files, 1, "FILE");
    std::optional<BoostRegex> expression;
    if (values.count("label") != 0) {
        expression = compile(label);
    }
    Diagnostics diagnostics(options.log);
    return editFile(files.front(), options, diagnostics, [&](AnnotationEdit& edit) {
        if (!expression) {
            edit.clear();
            return true;
        }
        try {
            std::erase_if(edit.annotations(),
                          [&](const SampledLabel& annotation) { return expression->matches(annotation.label); });
            return true;
        } catch (const std::runtime_error& error) {
            diagnostics.error("--label " + label + " cannot be matched: " + error.what());
            return false;
        }
    });
}

}  // namespace Zantrix::Cli
