#include "shell/Options.h"

#include "Command.h"

#include <boost/program_options/errors.hpp>
#include <boost/program_options/parsers.hpp>
#include <boost/program_options/positional_options.hpp>
#include <boost/program_options/value_semantic.hpp>

#include <iostream>

namespace po = boost::program_options;

namespace Zantrix::Cli {

namespace {

// The key of operands: no option can be written like this.
constexpr const char* c_szOperands = "operands of the command";

constexpr std::int64_t c_iMaxMilliseconds = 60000;

}  // namespace

void addCommonOptions(po::options_description& options, LogOptions& log) {
    options.add_options()  //
        ("log-level", po::value(&log.level)->value_name("LEVEL"),
         "report from this level on, to standard error: TRACE, DEBUG, INFO, WARN (the default), ERROR or OFF")  //
        ("log-config", po::value(&log.config)->value_name("FILE"),
         "let a file of log4cplus properties say what the library reports and where; %x is the current input")  //
        ("help,h", "print this help");
}

po::variables_map parseArguments(const std::vector<std::string>& arguments, const po::options_description& options,
                                 std::vector<std::string>& operands, std::vector<GivenOption>* inOrder) {
    namespace style = po::command_line_style;
    po::options_description all;
    all.add(options).add_options()(c_szOperands, po::value(&operands));
    po::positional_options_description positions;
    positions.add(c_szOperands, -1);
    po::variables_map values;
    operands.clear();
    try {
        const po::parsed_options parsed = po::command_line_parser(arguments)
                                              .options(all)
                                              .positional(positions)
                                              .style(style::unix_style & ~style::allow_guessing)
                                              .run();
        po::store(parsed, values);
        po::notify(values);
        if (inOrder != nullptr) {
            inOrder->clear();
            for (const po::option& option : parsed.options) {
                inOrder->push_back({option.string_key, option.value.empty() ? std::string() : option.value.front()});
            }
        }
    } catch (const po::invalid_command_line_syntax& error) {
        const bool isEmpty = error.kind() == po::invalid_syntax::empty_adjacent_parameter;
        throw UsageError(isEmpty ? "the value of '" + error.get_option_name() + "' is empty" : error.what());
    } catch (const po::error& error) {
        throw UsageError(error.what());
    }
    return values;
}

void checkMilliseconds(const std::string& what, std::int64_t milliseconds, std::int64_t least) {
    if (milliseconds < least || milliseconds > c_iMaxMilliseconds) {
        throw UsageError("a " + what + " of " + std::to_string(milliseconds) + " ms is refused; it must be " +
                         std::to_string(least) + " to " + std::to_string(c_iMaxMilliseconds) + " ms");
    }
}

void printHelp(const std::string& usage, const po::options_description& options, const std::string& rest) {
    std::cout << usage << '\n' << options << '\n' << rest << std::flush;
}

}  // namespace Zantrix::Cli
