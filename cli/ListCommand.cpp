#include "Command.h"
#include "FeatureGuide.h"
#include "FeatureNames.h"
#include "Options.h"
#include "Text.h"

#include <algorithm>
#include <iostream>

namespace po = boost::program_options;

namespace Zantrix::Cli {

namespace {

constexpr const char* c_szUsage =
    "Usage: murvane-audio list [NAME]\n"
    "Lists the features that 'murvane-audio features' computes, or explains one.\n";

constexpr const char* c_szHelpRest =
    "N is the number of samples of a window, L = N/2 the number of bins of its spectrum.\n\n"
    "Names are composed with '_': the LAST element sees the window, each one to its left sees the result on its\n"
    "right. FLATNESS_SPECTRUM is the flatness of the spectrum, MEAN_SLIDINGWINDOW(5)_ZEROCROSSINGRATE the mean of\n"
    "the last five zero crossing rates. Upper and lower case are alike.\n\n"
    "Examples:\n"
    "  murvane-audio list\n"
    "  murvane-audio list SPECTRALRANGE\n";

std::string padded(std::string text, std::size_t width) {
    text.resize(std::max(width, text.size()), ' ');
    return text;
}

void printRows(const FeatureGuide& guide) {
    std::size_t nameWidth = 0;
    std::size_t inputWidth = 0;
    std::size_t outputWidth = 0;
    for (const FeatureDescription* row : guide.rows()) {
        nameWidth = std::max(nameWidth, std::string(row->name).size() + std::string(row->parameters).size());
        inputWidth = std::max(inputWidth, std::string(row->input).size());
        outputWidth = std::max(outputWidth, std::string(row->output).size());
    }
    for (const FeatureDescription* row : guide.rows()) {
        std::cout << padded(std::string(row->name) + row->parameters, nameWidth) << "  "
                  << padded(row->input, inputWidth) << " -> " << padded(row->output, outputWidth) << "  "
                  << row->sentence << '\n';
    }
}

void explain(const FeatureDescription& row) {
    std::cout << row.name << row.parameters << ": " << row.sentence << ".\n"
              << "  parameters  " << (row.parameters[0] == '\0' ? "none" : row.parameters) << '\n'
              << "  input       " << row.input << '\n'
              << "  output      " << row.output << '\n';
    if (row.details[0] != '\0') {
        std::cout << row.details << '\n';
    }
    std::cout << "Example: murvane-audio features call.wav --feature '" << row.example << "'\n";
}

}  // namespace

int runList(const std::vector<std::string>& arguments) {
    po::options_description options("Options");
    options.add_options()("help,h", "print this help");
    std::vector<std::string> names;
    const po::variables_map values = parseArguments(arguments, options, names);
    if (values.count("help") != 0) {
        printHelp(c_szUsage, options, c_szHelpRest);
        return AllDone;
    }
    const FeatureNames featureNames;
    const FeatureGuide guide(featureNames);
    if (names.empty()) {
        printRows(guide);
        return AllDone;
    }
    if (names.size() > 1) {
        throw UsageError("list explains one feature at a time");
    }
    // "SPECTRALRANGE(440,20)" asks for SPECTRALRANGE.
    const FeatureDescription* row = guide.find(names.front().substr(0, names.front().find('(')));
    if (row == nullptr) {
        const std::vector<std::string> near = nearWords(names.front(), guide.names());
        throw UsageError("unknown feature '" + names.front() + "'" +
                         (near.empty() ? "" : "\nNames that come close: " + join(near, ", ")));
    }
    explain(*row);
    return AllDone;
}

}  // namespace Zantrix::Cli
