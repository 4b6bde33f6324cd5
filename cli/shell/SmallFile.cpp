#include "shell/SmallFile.h"

#include "Command.h"
#include "shell/Output.h"

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <memory>
#include <vector>

namespace Zantrix::Cli {

namespace {

// A device that never ends must not take all memory.
constexpr std::size_t c_uiMaxSize = std::size_t(1) << 24;

}  // namespace

std::string readSmallFile(const std::string& path) {
    errno = 0;
    const std::unique_ptr<std::FILE, int (*)(std::FILE*)> pFile(std::fopen(path.c_str(), "rb"), &std::fclose);
    std::string bytes;
    std::vector<char> piece(65536);
    for (std::size_t count = 1; pFile && count > 0 && bytes.size() <= c_uiMaxSize;) {
        count = std::fread(piece.data(), 1, piece.size(), pFile.get());
        bytes.append(piece.data(), count);
    }
    if (!pFile || std::ferror(pFile.get()) != 0) {
        throw UsageError("cannot read " + path + ": " + std::strerror(errno));
    }
    if (bytes.size() > c_uiMaxSize) {
        throw UsageError("cannot read " + path + ": longer than " + std::to_string(c_uiMaxSize) + " bytes");
    }
    return bytes;
}

std::string writeSmallFile(const std::string& path, const std::string& bytes) {
    Output output;
    return output.open(path) && output.write(bytes.data(), bytes.size()) && output.commit() ? std::string()
                                                                                            : output.describeError();
}

}  // namespace Zantrix::Cli
