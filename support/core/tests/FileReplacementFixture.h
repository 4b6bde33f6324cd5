#pragma once

// What the tests of file replacement share.
#include <murvane/core/FileReplacement.h>
#include <testkit/AsUser.h>
#include <testkit/WavFixture.h>

#include <gmock/gmock.h>

#include <algorithm>
#include <cstdint>
#include <filesystem>
#include <string>
#include <sys/stat.h>
#include <vector>

namespace file_replacement_test {

namespace fs = std::filesystem;
using testing::ElementsAre;
using testing::IsEmpty;
using testkit::readBytes;
using testkit::writeBytes;
using Zantrix::FileReplacement;

inline bool write(FileReplacement& file, const std::string& bytes) {
    return file.write(bytes.data(), bytes.size());
}

inline bool writeAt(FileReplacement& file, std::uint64_t offset, const std::string& bytes) {
    return file.writeAt(offset, bytes.data(), bytes.size());
}

inline mode_t modeOf(const std::string& path) {
    struct stat status {};
    EXPECT_EQ(::stat(path.c_str(), &status), 0);
    return status.st_mode & 07777;
}

class FileReplacementTest : public testing::Test {
protected:
    FileReplacementTest() : m_path(m_folder / "file") {}

    std::vector<std::string> names() const {
        std::vector<std::string> result;
        for (const fs::directory_entry& entry : fs::directory_iterator(m_folder.path())) {
            result.push_back(entry.path().filename().string());
        }
        std::sort(result.begin(), result.end());
        return result;
    }

    testkit::TemporaryFolder m_folder;
    const std::string m_path;
};

}  // namespace file_replacement_test
