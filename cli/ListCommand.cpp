#include "Command.h"
#include "features/FeatureNames.h"
#include "guide/FeatureGuide.h"
#include "guide/FunctionGuide.h"
#include "shell/Options.h"
#include "shell/Text.h"

#include <murvane/core/StringVector.h>
#include <murvane/math/SignalFeatureFactory.h>

#include <algorithm>
#include <iostream>

namespace po = boost::program_options;

namespace Zantrix::Cli {

namespace {

constexpr const char* c_szUsage =
    "Usage: murvane-audio list [NAME]\n"
    "Lists the features that 'murvane-audio features' computes and, behind an empty line, the functions that its\n"
    "formulas may call, or explains one, or each element of a composed name.\n";

constexpr const char* c_szHelpRest =
    "N is the number of samples of a window, L = N/2 the number of bins of its spectrum.\n\n"
    "Names are composed with '_': the LAST element sees the window, each one to its left sees the result on its\n"
    "right. FLATNESS_SPECTRUM is the flatness of the spectrum, MEAN_SLIDINGWINDOW(5)_ZEROCROSSINGRATE the mean of\n"
    "the last five zero crossing rates. Upper and lower case are alike, but not in functions.\n\n"
    "Examples:\n"
    "  murvane-audio list\n"
    "  murvane-audio list SPECTRALRANGE\n"
    "  murvane-audio list spectralRange\n"
    "  murvane-audio list FLATNESS_SPECTRUM\n";

std::string padded(std::string text, std::size_t width) {
    text.resize(std::max(width, text.size()), ' ');
    return text;
}

// A row of the list: what is written, what goes in and out, what it is.
struct Row {
    std::string form;
    const FeatureDescription* description;
};

void printRows(const std::vector<Row>& rows) {
    std::size_t formWidth = 0;
    std::size_t inputWidth = 0;
    std::size_t outputWidth = 0;
    for (const Row& row : rows) {
        formWidth = std::max(formWidth, row.form.size());
        inputWidth = std::max(inputWidth, std::string(row.description->input).size());
        outputWidth = std::max(outputWidth, std::string(row.description->output).size());
    }
    for (const Row& row : rows) {
        std::cout << padded(row.form, formWidth) << "  " << padded(row.description->input, inputWidth) << " -> "
                  << padded(row.description->output, outputWidth) << "  " << row.description->sentence << '\n';
    }
}

void printLists(const FeatureGuide& features, const FunctionGuide& functions) {
    std::vector<Row> rows;
    for (const FeatureDescription* feature : features.rows()) {
        rows.push_back({std::string(feature->name) + feature->parameters, feature});
    }
    printRows(rows);
    rows.clear();
    for (const FunctionDescription& function : functions.rows()) {
        rows.push_back({function.call(), function.feature});
    }
    std::cout << '\n';
    printRows(rows);
}

void explain(const std::string& form, const std::string& parameters, const FeatureDescription& row,
             const std::string& example) {
    std::cout << form << ": " << row.sentence << ".\n"
              << "  parameters  " << (parameters.empty() ? "none" : parameters) << '\n'
              << "  input       " << row.input << '\n'
              << "  output      " << row.output << '\n';
    if (row.details[0] != '\0') {
        std::cout << row.details << '\n';
    }
    std::cout << "Example: murvane-audio features call.wav " << example << '\n';
}

void explain(const FeatureDescription& row) {
    explain(std::string(row.name) + row.parameters, row.parameters, row,
            "--feature '" + std::string(row.example) + '\'');
}

void explain(const FunctionDescription& function) {
    std::vector<std::string> parameters;
    for (const Math::Xpr::FunctionParameter& parameter : function.parameters) {
        parameters.push_back(parameter.name + ", " + Math::Xpr::describe(parameter.kind) +
                             (parameter.required ? "" : " (may be left out)"));
    }
    explain(function.call(), join(parameters, "; "), *function.feature, "--expr '" + function.example + '\'');
}

// Whether anything is called so.
bool explain(const std::string& name, const FeatureGuide& features, const FunctionGuide& functions) {
    // "SPECTRALRANGE(440,20)" asks for SPECTRALRANGE.
    const std::string base = name.substr(0, name.find('('));
    const FeatureDescription* feature = features.find(base);
    const FunctionDescription* function = functions.find(base);
    if (feature != nullptr) {
        explain(*feature);
    }
    if (function != nullptr) {
        std::cout << (feature == nullptr ? "" : "\nIn formulas:\n");
        explain(*function);
    }
    return feature != nullptr || function != nullptr;
}

// The elements of a composed name, in the order in which they see the window.
void explainComposed(const std::string& name, const FeatureGuide& features) {
    StringVector elements;
    Math::SignalFeatureFactory::splitElements(name.c_str(), elements);
    std::cout << name << ": a composed name; the last element sees the window, each one to its left the result on its "
              << "right.\n";
    for (auto element = elements.rbegin(); element != elements.rend(); ++element) {
        std::string base;
        StringVector parameters;
        Math::SignalFeatureFactory::splitParams(element->c_str(), base, parameters);
        if (const FeatureDescription* row = features.find(base)) {
            std::cout << '\n';
            explain(*row);
        }
    }
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
    const FeatureGuide features([&](const std::string& name) { return featureNames.isKnown(name); });
    const FunctionGuide functions(features);
    if (names.empty()) {
        printLists(features, functions);
        return AllDone;
    }
    if (names.size() > 1) {
        throw UsageError("list explains one feature or function at a time");
    }
    const std::string& name = names.front();
    if (name.find('_') != std::string::npos) {
        if (const auto problem = featureNames.problem(name)) {
            throw UsageError(*problem);
        }
        explainComposed(name, features);
    } else if (!explain(name, features, functions)) {
        std::vector<std::string> candidates = functions.names();
        for (const std::string& name : features.names()) {
            candidates.push_back(name);
        }
        const std::vector<std::string> near = nearWords(names.front(), candidates);
        throw UsageError("unknown feature or function '" + names.front() + "'" +
                         (near.empty() ? "" : "\nNames that come close: " + join(near, ", ")));
    }
    return AllDone;
}

}  // namespace Zantrix::Cli
