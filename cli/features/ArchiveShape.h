#pragma once

#include <string>
#include <string_view>

/// A look at an archive before it is loaded: loading trusts what numbers in an archive say, so that a wrong one takes
/// all memory, or worse.
namespace Zantrix::Cli {

enum class ArchiveFormat { None, Text, Binary, Xml };

/// Archives are told apart by how they begin.
ArchiveFormat findArchiveFormat(std::string_view bytes);

/// Whether an archive is that of a list of texts behind the same start, and whole.
///
/// @param empty  an archive of the same format and kind whose list is empty; another release of the archive library may
///               have written either
bool hasShapeOf(ArchiveFormat format, const std::string& bytes, const std::string& empty);

}  // namespace Zantrix::Cli
