#include "StreamBytes.h"

#include "ErrorText.h"

#include <cstdint>
#include <istream>
#include <sys/mman.h>

namespace Zantrix::IFF {

namespace {

constexpr std::size_t c_uiStep = std::size_t{64} * 1024;

// How many bytes the stream says are left; 0 if it cannot tell, like a pipe.
std::uint64_t countRest(std::istream& source) {
    const std::streamoff here = source.tellg();
    if (here < 0) {
        source.clear();
        return 0;
    }
    source.seekg(0, std::ios::end);
    const std::streamoff end = source.tellg();
    source.clear();
    source.seekg(here);
    return end > here ? static_cast<std::uint64_t>(end - here) : 0;
}

// Asks for huge pages for what the string has reserved: a recording of an hour takes longer to have 14,000 small ones
// handed out than to be read. Systems that have none go on without.
void preferHugePages(std::string& bytes) {
#ifdef MADV_HUGEPAGE
    constexpr std::uintptr_t hugePage = std::uintptr_t{2} << 20;
    const auto begin = reinterpret_cast<std::uintptr_t>(bytes.data());
    const std::uintptr_t first = (begin + hugePage - 1) / hugePage * hugePage;
    const std::uintptr_t end = (begin + bytes.capacity()) / hugePage * hugePage;
    if (first < end) {
        ::madvise(bytes.data() + (first - begin), end - first, MADV_HUGEPAGE);
    }
#else
    static_cast<void>(bytes);
#endif
}

bool refuseSize(std::uint64_t size, std::uint64_t maxBytes, std::string& error) {
    error = errorText(0, "the file", size, " bytes and more, at most ", maxBytes,
                      " are accepted; files beyond 4 GiB are not supported");
    return false;
}

}  // namespace

bool readRest(std::istream& source, std::uint64_t maxBytes, std::string& bytes, std::string& error) {
    const std::uint64_t expected = bytes.size() + countRest(source);
    if (expected > maxBytes) {
        return refuseSize(expected, maxBytes, error);
    }
    // Only address space: untouched pages cost nothing should the stream have promised too much.
    bytes.reserve(static_cast<std::size_t>(expected) + c_uiStep);
    preferHugePages(bytes);
    while (true) {
        const std::size_t old = bytes.size();
        bytes.resize(old + c_uiStep);
        source.read(bytes.data() + old, c_uiStep);
        bytes.resize(old + static_cast<std::size_t>(source.gcount()));
        if (source.bad()) {
            error = errorText(bytes.size(), "the file", "the stream reported an error");
            return false;
        }
        if (bytes.size() > maxBytes) {
            return refuseSize(bytes.size(), maxBytes, error);
        }
        if (source.eof()) {
            break;
        }
        if (source.fail()) {
            error = errorText(bytes.size(), "the file", "the stream failed");
            return false;
        }
    }
    if (bytes.capacity() - bytes.size() > bytes.size() / 4) {
        bytes.shrink_to_fit();
    }
    return true;
}

}  // namespace Zantrix::IFF
