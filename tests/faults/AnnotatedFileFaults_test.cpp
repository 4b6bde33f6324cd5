// Whatever goes wrong during an edit, and whenever: the recording is the old one or the new one, byte for byte.
#include "SystemCallFaults.h"

#include <murvane/audio/annotations/AudioAnnotatedFile.h>
#include <testkit/AsUser.h>
#include <testkit/WavBytes.h>
#include <testkit/WavFixture.h>

#include <gmock/gmock.h>
#include <log4cplus/logger.h>

#include <cerrno>
#include <filesystem>
#include <functional>
#include <string>
#include <sys/stat.h>
#include <vector>

namespace {

using testkit::readBytes;
using testkit::writeBytes;
using Zantrix::Audio::AnnotatedFile;
using Zantrix::Audio::AnnotationImpl;

constexpr faults::Fault c_faults[] = {
    {"killed", {}}, {"no space", ENOSPC}, {"I/O error", EIO}, {"interrupted", EINTR}, {"not permitted", EPERM},
};

struct Edit {
    const char* name;
    bool (*run)(const std::string& file, const std::string& other);
};

constexpr Edit c_edits[] = {
    {"Copy", [](const std::string& file,
                const std::string& other) { return AnnotatedFile::copyAnnotations(other.c_str(), file.c_str()); }},
    {"Append", [](const std::string& file,
                  const std::string& other) { return AnnotatedFile::addAnnotations(other.c_str(), file.c_str()); }},
    {"Add", [](const std::string& file,
               const std::string&) { return AnnotatedFile::addAnnotation(file.c_str(), AnnotationImpl()); }},
    {"Clear",
     [](const std::string& file, const std::string&) { return AnnotatedFile::clearAnnotations(file.c_str()); }},
    {"ClearByExpression",
     [](const std::string& file, const std::string&) { return AnnotatedFile::clearAnnotations(file.c_str(), "a.*"); }},
};

std::string annotated(const std::string& label) {
    using namespace wav;
    // More audio than is written at once.
    return file(fmt() + chunk("data", std::string(200000, 's')) + chunk("cue ", u32(1) + cueRecord(0, 100)) +
                chunk("LIST", "adtl" + ltxt(0, 50) + labl(0, label)));
}

class AnnotatedFileFaults : public testing::TestWithParam<Edit> {
protected:
    AnnotatedFileFaults() : m_file(m_folder / "call.wav"), m_other(m_folder / "other.wav") {
        writeBytes(m_file, m_old);
        writeBytes(m_other, annotated("another"));
        // Records would only add system calls that have nothing to do with the edit.
        log4cplus::Logger::getRoot().setLogLevel(log4cplus::OFF_LOG_LEVEL);
    }
    ~AnnotatedFileFaults() override { log4cplus::Logger::getRoot().setLogLevel(log4cplus::DEBUG_LOG_LEVEL); }

    std::size_t countFiles() const {
        std::size_t count = 0;
        for ([[maybe_unused]] const auto& entry : std::filesystem::directory_iterator(m_folder.path())) {
            ++count;
        }
        return count;
    }

    // Puts the folder back into the state before an edit.
    void restore() {
        for (const auto& entry : std::filesystem::directory_iterator(m_folder.path())) {
            std::filesystem::remove(entry.path());
        }
        writeBytes(m_file, m_old);
        writeBytes(m_other, annotated("another"));
    }

    // What the edit makes of the file when nothing goes wrong.
    std::string edited() {
        EXPECT_TRUE(GetParam().run(m_file, m_other));
        const std::string result = readBytes(m_file);
        writeBytes(m_file, m_old);
        return result;
    }

    testkit::TemporaryFolder m_folder;
    const std::string m_old = annotated("a label");
    const std::string m_file;
    const std::string m_other;
};

}  // namespace

TEST_P(AnnotatedFileFaults, LeaveTheOldFileOrTheNewOne) {
    const std::string neu = edited();
    ASSERT_NE(neu, m_old);
    for (const faults::Fault& fault : c_faults) {
        unsigned newFiles = 0;
        unsigned place = 0;
        for (bool isReached = true; isReached; ++place) {
            ASSERT_LT(place, 5000u);
            const faults::Outcome outcome =
                faults::runWithFault([&] { return GetParam().run(m_file, m_other) ? 0 : 1; }, place, fault);
            isReached = outcome.isReached;
            const std::string where =
                std::string(fault.name) + " at system call " + std::to_string(place) + ", number " + outcome.systemCall;
            const std::string bytes = readBytes(m_file);
            ASSERT_TRUE(bytes == m_old || bytes == neu) << where << ": " << bytes.size() << " bytes";
            newFiles += bytes == neu ? 1 : 0;
            if (outcome.exitCode) {
                ASSERT_EQ(*outcome.exitCode == 0, bytes == neu) << where << ": told the wrong thing";
                ASSERT_EQ(countFiles(), 2u) << where << ": left a temporary";
            }
            restore();
        }
        // The last run went through; and most places are before the rename.
        EXPECT_GT(newFiles, 0u) << fault.name;
        EXPECT_GT(place, newFiles + 10) << fault.name;
    }
}

// In a folder that takes no temporary the file itself is overwritten. A process that dies meanwhile leaves a part; one
// that goes on puts the old bytes back.
TEST_P(AnnotatedFileFaults, LeaveTheOldFileOrTheNewOneWhereItIsWrittenInPlace) {
    const std::string neu = edited();
    const auto editInPlace = [&] { return dropPrivileges() && GetParam().run(m_file, m_other) ? 0 : 1; };
    for (const faults::Fault& fault : c_faults) {
        if (!fault.error) {
            continue;
        }
        unsigned failures = 0;
        unsigned place = 0;
        for (bool isReached = true; isReached; ++place) {
            ASSERT_LT(place, 5000u);
            restore();
            giveToUser(m_file);
            ::chmod(m_folder.path().c_str(), 0555);
            const faults::Outcome outcome = faults::runWithFault(editInPlace, place, fault);
            ::chmod(m_folder.path().c_str(), 0755);
            isReached = outcome.isReached;
            const std::string where =
                std::string(fault.name) + " at system call " + std::to_string(place) + ", number " + outcome.systemCall;
            const std::string bytes = readBytes(m_file);
            ASSERT_TRUE(outcome.exitCode) << where << ": died";
            ASSERT_TRUE(bytes == (*outcome.exitCode == 0 ? neu : m_old)) << where << ": " << bytes.size() << " bytes";
            ASSERT_EQ(countFiles(), 2u) << where << ": left a file";
            failures += *outcome.exitCode == 0 ? 0 : 1;
        }
        EXPECT_GT(failures, 0u) << fault.name;
    }
}

INSTANTIATE_TEST_SUITE_P(Edits, AnnotatedFileFaults, testing::ValuesIn(c_edits),
                         [](const testing::TestParamInfo<Edit>& edit) { return edit.param.name; });
