#include "Command.h"
#include "annotations/Actions.h"
#include "shell/Text.h"

#include <algorithm>
#include <iostream>
#include <iterator>

namespace Zantrix::Cli {

namespace {

struct Action {
    const char* name;
    const char* operands;
    const char* summary;
    int (*run)(const std::vector<std::string>& arguments);
};

constexpr Action c_actions[] = {
    {"list", "FILE...", "show the annotations of files", runAnnotationsList},
    {"add", "FILE", "add one annotation", runAnnotationsAdd},
    {"copy", "FROM TO", "replace the annotations of TO by those of FROM", runAnnotationsCopy},
    {"append", "FROM TO", "add the annotations of FROM to those of TO", runAnnotationsAppend},
    {"clear", "FILE", "remove all annotations, or those with certain labels", runAnnotationsClear},
    {"validate", "FILE...", "tell what is wrong with the chunks of files", runAnnotationsValidate},
    {"import", "FILE LABELS", "replace the annotations of FILE by those of a label file", runAnnotationsImport},
    {"export", "FILE", "write the annotations as a label file", runAnnotationsExport},
};

void printUsage() {
    std::cout << "Usage: murvane-audio annotations ACTION [OPTION]... FILE...\n"
                 "Keeps labelled intervals, such as a tone SF_440 from 0.5 s to 1 s, inside mono WAV files.\n\n"
                 "Actions:\n";
    for (const Action& action : c_actions) {
        std::string usage = std::string(action.name) + ' ' + action.operands;
        usage.resize(20, ' ');
        std::cout << "  " << usage << action.summary << '\n';
    }
    std::cout
        << "\n"
           "  murvane-audio annotations ACTION --help   tells all about one of them\n\n"
           "A file that is edited is replaced as a whole or stays as it was. docs/formats/annotations.md tells how\n"
           "annotations stand in files, and what other programs make of them.\n\n"
           "Examples:\n"
           "  murvane-audio annotations add call.wav --label SF_440 --start 0.5 --stop 1.0\n"
           "  murvane-audio annotations list call.wav\n"
           "  murvane-audio annotations export call.wav --output call.TextGrid\n"
           "  murvane-audio annotations import call.wav labels.txt --backup\n"
        << std::flush;
}

}  // namespace

int runAnnotations(const std::vector<std::string>& arguments) {
    std::vector<std::string> names;
    for (const Action& action : c_actions) {
        names.emplace_back(action.name);
    }
    if (arguments.empty()) {
        throw UsageError("no action given; the actions are " + join(names, ", "));
    }
    const std::string& first = arguments.front();
    if (first == "--help" || first == "-h") {
        printUsage();
        return AllDone;
    }
    const auto* action = std::find_if(std::begin(c_actions), std::end(c_actions),
                                      [&](const Action& candidate) { return first == candidate.name; });
    if (action == std::end(c_actions)) {
        throw UsageError("unknown action '" + first + "'; the actions are " + join(names, ", "));
    }
    try {
        return action->run({arguments.begin() + 1, arguments.end()});
    } catch (const UsageError& error) {
        return tellWrongUsage(error, "annotations " + first);
    }
}

}  // namespace Zantrix::Cli
