#pragma once

#include <murvane/core/FileReplacement.h>

#include <array>
#include <streambuf>

namespace Zantrix {

/// Lets an output stream fill a file replacement. What was written has arrived after a flush of the stream that
/// succeeded; the file replacement, which must outlive the buffer, is then committed by its owner.
class MURVANE_API FileReplacementBuffer : public std::streambuf {
public:
    explicit FileReplacementBuffer(FileReplacement& file);

protected:
    int_type overflow(int_type character) override;
    std::streamsize xsputn(const char* bytes, std::streamsize size) override;
    int sync() override;

private:
    FileReplacement& m_file;
    std::array<char, 65536> m_aBytes;
};

}  // namespace Zantrix
