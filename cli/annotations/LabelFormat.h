#pragma once

#include "annotations/Recording.h"

#include <string>
#include <string_view>
#include <vector>

/// Files of labels that other programs read and write. What each format makes of an annotation is told in
/// docs/formats/annotations.md.
namespace Zantrix::Cli {

/// One format. Both directions throw `LabelError`; what is read comes with the place of a mistake, and its times are as
/// written, sensible or not.
struct LabelFormat {
    const char* name;
    const char* extension;  ///< of its files, in lower case
    bool hasTiers;          ///< whether its files have several lists, each with a name

    std::string (*write)(const Recording& recording);

    /// @param bytes  the whole file
    /// @param tiers  names of the lists to read; all of them if empty
    std::vector<TimedLabel> (*read)(std::string_view bytes, const std::vector<std::string>& tiers);
};

/// All formats, in the order of their names.
const std::vector<LabelFormat>& labelFormats();

/// The format of a label file.
///
/// @param name  as the user gave it; "" for the format that the extension of `path` tells
/// @throw UsageError  naming the formats
const LabelFormat& chooseLabelFormat(const std::string& name, const std::string& path);

std::string writeAudacityLabels(const Recording& recording);
std::vector<TimedLabel> readAudacityLabels(std::string_view bytes, const std::vector<std::string>& tiers);

std::string writeCsvLabels(const Recording& recording);
std::vector<TimedLabel> readCsvLabels(std::string_view bytes, const std::vector<std::string>& tiers);

std::string writeJsonLabels(const Recording& recording);
std::vector<TimedLabel> readJsonLabels(std::string_view bytes, const std::vector<std::string>& tiers);

std::string writeTextGrid(const Recording& recording);
std::vector<TimedLabel> readTextGrid(std::string_view bytes, const std::vector<std::string>& tiers);

/// What is left of a text behind the byte order mark of UTF-8, if it has one.
std::string_view withoutByteOrderMark(std::string_view text);

/// A time in seconds as a field of line `line` says it; blanks around it do not count.
///
/// @throw LabelError  naming the line
double parseSeconds(std::string_view field, std::size_t line);

}  // namespace Zantrix::Cli
