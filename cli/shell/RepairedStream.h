#pragma once

#include <array>
#include <cstdint>
#include <string>
#include <thread>

namespace Zantrix::Cli {

/// Offers a WAV file whose header was never completed as a pipe with a header that says so, in the one form that
/// libsndfile understands: a RIFF size of 8. The file itself stays as it is, and is never in memory as a whole.
class RepairedStream {
public:
    RepairedStream() = default;

    /// Waits for the sender, which stops once the reader has closed its end: close that first.
    ~RepairedStream();

    RepairedStream(const RepairedStream&) = delete;
    RepairedStream& operator=(const RepairedStream&) = delete;

    /// Begins to send the file.
    ///
    /// @return false, with an error, when that is impossible
    bool start(const std::string& path);

    /// Where to read; to be opened once.
    const std::string& path() const { return m_strPath; }

    const std::string& getError() const { return m_strError; }

private:
    bool fail(int errorNumber);

    int m_iFile = -1;
    std::array<int, 2> m_pipe{-1, -1};  // to read, to write
    std::string m_strPath;
    std::string m_strError;
    std::thread m_sender;
};

}  // namespace Zantrix::Cli
