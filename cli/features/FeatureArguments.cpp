#include "features/FeatureArguments.h"

#include <filesystem>

namespace Zantrix::Cli {

namespace {

constexpr const char* c_szOption = "--feature";
constexpr const char* c_szFormulaOption = "--expr";

bool isOption(const std::string& argument) {
    return argument.size() > 1 && argument.front() == '-';
}

bool looksLikeFile(const std::string& argument) {
    std::error_code ignored;
    return argument.empty() || argument == "-" || argument.find_first_of("./") != std::string::npos ||
           std::filesystem::exists(argument, ignored);
}

}  // namespace

std::vector<std::string> expandFeatureArguments(const std::vector<std::string>& arguments,
                                                const std::function<bool(const std::string&)>& isKnownName) {
    const std::string assignment = std::string(c_szOption) + '=';
    std::vector<std::string> expanded;
    bool isFirstName = false;  // the next argument is a name
    bool isName = false;       // the next argument may be one
    for (auto argument = arguments.begin(); argument != arguments.end(); ++argument) {
        if (*argument == "--") {
            expanded.insert(expanded.end(), argument, arguments.end());
            break;
        }
        const auto next = std::next(argument);
        if (*argument == c_szFormulaOption && next != arguments.end() && next->rfind("--", 0) != 0) {
            expanded.push_back(std::string(c_szFormulaOption) + '=' + *next);
            argument = next;
            isName = false;
        } else if (*argument == c_szOption && next != arguments.end() && !isOption(*next)) {
            isFirstName = true;
        } else if (isOption(*argument)) {
            expanded.push_back(*argument);
            isName = argument->rfind(assignment, 0) == 0;
        } else if (isFirstName || (isName && (isKnownName(*argument) || !looksLikeFile(*argument)))) {
            expanded.push_back(assignment + *argument);
            isFirstName = false;
            isName = true;
        } else {
            expanded.push_back(*argument);
            isName = false;
        }
    }
    return expanded;
}

}  // namespace Zantrix::Cli
