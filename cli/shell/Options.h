#pragma once

#include "shell/Diagnostics.h"

#include <boost/program_options/options_description.hpp>
#include <boost/program_options/variables_map.hpp>

#include <cstdint>
#include <string>
#include <vector>

/// The conventions that the options of all subcommands share.
namespace Zantrix::Cli {

/// Adds --help, --log-level and --log-config.
void addCommonOptions(boost::program_options::options_description& options, LogOptions& log);

/// An option as it stands among the arguments.
struct GivenOption {
    std::string name;
    std::string value;  ///< "" for one without
};

/// Parses the arguments of a subcommand. Options may stand before, between and behind the operands and are never
/// abbreviated; "--" ends them. Values arrive where the options say.
///
/// @param operands  replaced by what is not an option, in order
/// @param inOrder   unless null, replaced by all options in their order, whatever they are
/// @throw UsageError  naming the argument that is wrong
boost::program_options::variables_map parseArguments(const std::vector<std::string>& arguments,
                                                     const boost::program_options::options_description& options,
                                                     std::vector<std::string>& operands,
                                                     std::vector<GivenOption>* inOrder = nullptr);

/// Makes sure that a length of audio is at most a minute: a typing error must not take all memory.
///
/// @param what   what is that long, for the message
/// @param least  in milliseconds
/// @throw UsageError
void checkMilliseconds(const std::string& what, std::int64_t milliseconds, std::int64_t least);

/// Prints the help of a subcommand to standard output: usage, the options, and what follows them.
void printHelp(const std::string& usage, const boost::program_options::options_description& options,
               const std::string& rest);

}  // namespace Zantrix::Cli
