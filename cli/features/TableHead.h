#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

/// What a table begins with.
namespace Zantrix::Cli {

/// The line that names the columns, file and time in front.
std::string csvHead(const std::vector<std::string>& columns);

/// The head of a matrix of float64 in NumPy's format; as long whatever the numbers are, so that the values behind it
/// are aligned when the file is mapped.
std::string npyHead(std::uint64_t rows, std::size_t columns);

}  // namespace Zantrix::Cli
