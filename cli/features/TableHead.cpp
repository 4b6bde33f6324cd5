#include "features/TableHead.h"

#include "shell/Text.h"

#include <bit>

namespace Zantrix::Cli {

namespace {

static_assert(std::endian::native == std::endian::little, "the matrix is written as it stands in memory");

// Enough for all numbers of rows and columns, and a multiple of 64.
constexpr std::size_t c_uiNpyHeadSize = 128;

}  // namespace

std::string csvHead(const std::vector<std::string>& columns) {
    std::string head = "file,time";
    for (const std::string& column : columns) {
        head += ',' + csvField(column);
    }
    return head + '\n';
}

std::string npyHead(std::uint64_t rows, std::size_t columns) {
    std::string head("\x93NUMPY\x01\x00", 8);
    head += static_cast<char>(c_uiNpyHeadSize - 10);
    head += '\0';
    head += "{'descr': '<f8', 'fortran_order': False, 'shape': (" + std::to_string(rows) + ", " +
            std::to_string(columns) + "), }";
    head.resize(c_uiNpyHeadSize - 1, ' ');
    return head + '\n';
}

}  // namespace Zantrix::Cli
