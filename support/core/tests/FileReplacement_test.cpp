#include "FileReplacementFixture.h"

#include <csignal>
#include <limits>
#include <sys/resource.h>

namespace {

using namespace file_replacement_test;

TEST_F(FileReplacementTest, MakesANewFileThatAppearsWhenItIsWhole) {
    FileReplacement file;
    ASSERT_TRUE(file.open(m_path));
    EXPECT_TRUE(write(file, "hello "));
    EXPECT_TRUE(write(file, "world"));
    EXPECT_EQ(file.size(), 11u);
    EXPECT_TRUE(file.isSeekable());
    EXPECT_FALSE(fs::exists(m_path));
    EXPECT_TRUE(file.commit());
    EXPECT_EQ(file.getError(), "");
    EXPECT_EQ(readBytes(m_path), "hello world");
    EXPECT_THAT(names(), ElementsAre("file"));
}

TEST_F(FileReplacementTest, KeepsTheOldFileUntilTheNewOneIsWhole) {
    writeBytes(m_path, "old and longer than the new one");
    FileReplacement file;
    ASSERT_TRUE(file.open(m_path));
    EXPECT_TRUE(write(file, "new"));
    EXPECT_EQ(readBytes(m_path), "old and longer than the new one");
    EXPECT_TRUE(file.commit());
    EXPECT_EQ(readBytes(m_path), "new");
    EXPECT_THAT(names(), ElementsAre("file"));
}

TEST_F(FileReplacementTest, LeavesEverythingAsItWasWithoutACommit) {
    writeBytes(m_path, "old");
    {
        FileReplacement file;
        ASSERT_TRUE(file.open(m_path));
        EXPECT_TRUE(write(file, "new"));
        FileReplacement other;
        ASSERT_TRUE(other.open(m_folder / "other"));
    }
    EXPECT_EQ(readBytes(m_path), "old");
    EXPECT_THAT(names(), ElementsAre("file"));
}

TEST_F(FileReplacementTest, MakesAnEmptyFile) {
    writeBytes(m_path, "old");
    FileReplacement file;
    ASSERT_TRUE(file.open(m_path));
    EXPECT_TRUE(file.write(nullptr, 0));
    EXPECT_TRUE(file.commit());
    EXPECT_EQ(readBytes(m_path), "");
}

TEST_F(FileReplacementTest, OverwritesWhatWasWrittenBefore) {
    FileReplacement file;
    ASSERT_TRUE(file.open(m_path));
    EXPECT_TRUE(write(file, "0123456789"));
    EXPECT_TRUE(writeAt(file, 2, "ab"));
    EXPECT_TRUE(writeAt(file, 8, "yz"));
    EXPECT_TRUE(file.writeAt(10, nullptr, 0));
    EXPECT_EQ(file.size(), 10u);
    EXPECT_TRUE(write(file, "!"));
    EXPECT_EQ(file.size(), 11u);
    EXPECT_TRUE(file.commit());
    EXPECT_EQ(readBytes(m_path), "01ab4567yz!");
}

TEST_F(FileReplacementTest, OverwritesNothingThatWasNotWritten) {
    for (const std::uint64_t offset : {std::uint64_t{3}, std::uint64_t{5}, std::numeric_limits<std::uint64_t>::max()}) {
        writeBytes(m_path, "old");
        FileReplacement file;
        ASSERT_TRUE(file.open(m_path));
        ASSERT_TRUE(write(file, "1234"));
        EXPECT_FALSE(writeAt(file, offset, "ab")) << offset;
        EXPECT_NE(file.getError(), "");
        EXPECT_FALSE(file.commit());
        EXPECT_EQ(readBytes(m_path), "old");
        EXPECT_THAT(names(), ElementsAre("file"));
    }
}

TEST_F(FileReplacementTest, ForgetsWhatWasWrittenFromAPlaceOn) {
    FileReplacement file;
    ASSERT_TRUE(file.open(m_path));
    EXPECT_TRUE(write(file, "0123456789"));
    EXPECT_TRUE(file.truncate(4));
    EXPECT_EQ(file.size(), 4u);
    EXPECT_TRUE(write(file, "xy"));
    EXPECT_EQ(file.size(), 6u);
    EXPECT_TRUE(file.truncate(6));
    EXPECT_TRUE(file.truncate(1000)) << "there is nothing to forget";
    EXPECT_EQ(file.size(), 6u);
    EXPECT_TRUE(file.commit());
    EXPECT_EQ(readBytes(m_path), "0123xy");
}

TEST_F(FileReplacementTest, StartsAnewWhenOpenedAgain) {
    FileReplacement file;
    ASSERT_TRUE(file.open(m_folder / "first"));
    EXPECT_TRUE(write(file, "first"));
    ASSERT_TRUE(file.open(m_path));
    EXPECT_EQ(file.size(), 0u);
    EXPECT_TRUE(write(file, "second"));
    EXPECT_TRUE(file.commit());
    EXPECT_THAT(names(), ElementsAre("file"));
    EXPECT_EQ(readBytes(m_path), "second");
    EXPECT_FALSE(file.commit()) << "it is over";
}

TEST_F(FileReplacementTest, DoesNothingBeforeItIsOpened) {
    FileReplacement file;
    EXPECT_FALSE(write(file, "x"));
    EXPECT_FALSE(file.commit());
    EXPECT_NE(file.getError(), "");
}

TEST_F(FileReplacementTest, ReplacesOneFileTwiceAtTheSameTime) {
    FileReplacement first;
    FileReplacement second;
    ASSERT_TRUE(first.open(m_path));
    ASSERT_TRUE(second.open(m_path));
    EXPECT_TRUE(write(first, "first"));
    EXPECT_TRUE(write(second, "second"));
    EXPECT_TRUE(first.commit());
    EXPECT_EQ(readBytes(m_path), "first");
    EXPECT_TRUE(second.commit());
    EXPECT_EQ(readBytes(m_path), "second");
    EXPECT_THAT(names(), ElementsAre("file"));
}

TEST_F(FileReplacementTest, TakesNamesAsLongAsTheSystemDoes) {
    const std::string path = m_folder / std::string(255, 'n');
    writeBytes(path, "old");
    FileReplacement file;
    ASSERT_TRUE(file.open(path)) << file.getError();
    EXPECT_TRUE(write(file, "new"));
    EXPECT_TRUE(file.commit());
    EXPECT_EQ(readBytes(path), "new");
    EXPECT_EQ(names().size(), 1u);
}

TEST_F(FileReplacementTest, TakesANameInTheWorkingFolder) {
    const fs::path before = fs::current_path();
    fs::current_path(m_folder.path());
    FileReplacement file;
    EXPECT_TRUE(file.open("plain"));
    EXPECT_TRUE(write(file, "bytes"));
    EXPECT_TRUE(file.commit());
    fs::current_path(before);
    EXPECT_THAT(names(), ElementsAre("plain"));
}

// --- modes and owners ---

TEST_F(FileReplacementTest, IsAsOldAsItIsToldToBe) {
    const auto modified = [this] {
        struct stat status {};
        EXPECT_EQ(::stat(m_path.c_str(), &status), 0);
        return std::pair(status.st_mtim.tv_sec, status.st_mtim.tv_nsec);
    };
    FileReplacement file;
    ASSERT_TRUE(file.open(m_path));
    file.setTime({1000000000, 123456789});
    EXPECT_TRUE(write(file, "old"));
    EXPECT_TRUE(file.commit());
    EXPECT_EQ(modified(), std::pair(time_t(1000000000), 123456789L));
    ASSERT_TRUE(file.open(m_path));
    EXPECT_TRUE(write(file, "new"));
    EXPECT_TRUE(file.commit());
    EXPECT_GT(modified().first, 1000000000);
}

TEST_F(FileReplacementTest, RefusesAFileThatMayNotBeWritten) {
    writeBytes(m_path, "old");
    giveToUser(m_folder.path().string());
    giveToUser(m_path);
    ASSERT_EQ(::chmod(m_path.c_str(), 0444), 0);
    EXPECT_EQ(asUser([&]() -> std::string {
                  FileReplacement file;
                  if (file.open(m_path, FileReplacement::InPlace::Allowed)) {
                      return "it was opened";
                  }
                  return file.getError() == "Permission denied" ? "" : file.getError();
              }),
              "");
    EXPECT_EQ(readBytes(m_path), "old");
    EXPECT_THAT(names(), ElementsAre("file"));
}

/// A folder that takes no new file, with a file in it that may be written.
class FileReplacementReadOnlyFolder : public FileReplacementTest {
protected:
    FileReplacementReadOnlyFolder() {
        writeBytes(m_path, "old and longer");
        giveToUser(m_path);
        giveToUser(m_folder.path().string());
        ::chmod(m_folder.path().c_str(), 0555);
    }
    ~FileReplacementReadOnlyFolder() override { ::chmod(m_folder.path().c_str(), 0755); }
};

TEST_F(FileReplacementReadOnlyFolder, IsRefusedUnlessWritingInPlaceIsAllowed) {
    EXPECT_EQ(asUser([&]() -> std::string {
                  FileReplacement file;
                  if (file.open(m_path)) {
                      return "it was opened";
                  }
                  if (file.open(m_folder / "new", FileReplacement::InPlace::Allowed)) {
                      return "a new file was opened";
                  }
                  return file.getError() == "Permission denied" ? "" : file.getError();
              }),
              "");
    EXPECT_EQ(readBytes(m_path), "old and longer");
}

TEST_F(FileReplacementReadOnlyFolder, HasItsFileWrittenInPlaceAtTheCommit) {
    struct stat before {};
    ASSERT_EQ(::stat(m_path.c_str(), &before), 0);
    EXPECT_EQ(asUser([&]() -> std::string {
                  FileReplacement file;
                  if (!file.open(m_path, FileReplacement::InPlace::Allowed) || !file.isSeekable()) {
                      return "open: " + file.getError();
                  }
                  if (!write(file, "0123456789") || !file.truncate(6) || !file.truncate(9) || !writeAt(file, 1, "ab") ||
                      !write(file, "!") || file.size() != 7) {
                      return "write: " + file.getError();
                  }
                  if (readBytes(m_path) != "old and longer") {
                      return "written too early";
                  }
                  return file.commit() ? "" : "commit: " + file.getError();
              }),
              "");
    EXPECT_EQ(readBytes(m_path), "0ab345!");
    struct stat after {};
    ASSERT_EQ(::stat(m_path.c_str(), &after), 0);
    EXPECT_EQ(after.st_ino, before.st_ino) << "it is the same file";
    EXPECT_THAT(names(), ElementsAre("file"));
}

TEST_F(FileReplacementReadOnlyFolder, KeepsItsFileWithoutACommit) {
    EXPECT_EQ(asUser([&]() -> std::string {
                  FileReplacement file;
                  return file.open(m_path, FileReplacement::InPlace::Allowed) && write(file, "new") ? ""
                                                                                                    : file.getError();
              }),
              "");
    EXPECT_EQ(readBytes(m_path), "old and longer");
}

TEST_F(FileReplacementReadOnlyFolder, HasItsFileBackWhenTheNewBytesDoNotFit) {
    const std::string old(5000, 'o');
    writeBytes(m_path, old);
    EXPECT_EQ(asUser([&]() -> std::string {
                  // A limit on the size of files stands for the full disk.
                  std::signal(SIGXFSZ, SIG_IGN);
                  const rlimit limit{8192, 8192};
                  ::setrlimit(RLIMIT_FSIZE, &limit);
                  FileReplacement file;
                  if (!file.open(m_path, FileReplacement::InPlace::Allowed) || !write(file, std::string(9000, 'n'))) {
                      return "open: " + file.getError();
                  }
                  return file.commit() ? "committed" : file.getError();
              }),
              "File too large");
    EXPECT_TRUE(readBytes(m_path) == old);
}

TEST_F(FileReplacementReadOnlyFolder, OverwritesNothingThatWasNotWritten) {
    EXPECT_EQ(asUser([&]() -> std::string {
                  FileReplacement file;
                  if (!file.open(m_path, FileReplacement::InPlace::Allowed) || !write(file, "1234")) {
                      return "open: " + file.getError();
                  }
                  if (writeAt(file, 5, "ab")) {
                      return "written";
                  }
                  return file.commit() ? "committed" : "";
              }),
              "");
    EXPECT_EQ(readBytes(m_path), "old and longer");
}

}  // namespace
