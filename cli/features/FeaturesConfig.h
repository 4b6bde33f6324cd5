#pragma once

#include "features/FeaturesOptions.h"

#include <string>

/// What 'murvane-audio features' is to do, kept in a file of `key = value` lines (see `ParameterTrie`):
///
///     features.window-ms = 32
///     features.overlap-ms = 16
///     features.suppress-dc = false
///     features.format = csv
///     features.column.1.feature = FLATNESS_SPECTRUM
///     features.column.2.expr = f0=harmonicProduct(spectrum(x))
///
/// Any of them may be missing. Columns are in the order of their numbers, which may leave gaps.
namespace Zantrix::Cli {

/// Sets the options that a file names.
///
/// @throw UsageError  naming the file and, of a key that is unknown or has a wrong value, key and line
void readConfig(const std::string& path, const FeatureNames& featureNames, FeaturesOptions& options);

/// The text of a file that gives these options.
std::string writeConfig(const FeaturesOptions& options);

}  // namespace Zantrix::Cli
