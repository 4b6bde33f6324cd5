#include "FileReplacementFixture.h"

#include <csignal>
#include <sys/resource.h>
#include <thread>

namespace {

using namespace file_replacement_test;

// --- links ---

TEST_F(FileReplacementTest, ReplacesWhatALinkPointsTo) {
    fs::create_directory(m_folder / "dir");
    writeBytes(m_folder / "dir/target", "old");
    fs::create_symlink("dir/target", m_folder / "link");
    fs::create_symlink(m_folder / "link", m_path);
    FileReplacement file;
    ASSERT_TRUE(file.open(m_path));
    EXPECT_TRUE(write(file, "new"));
    EXPECT_TRUE(file.commit());
    EXPECT_TRUE(fs::is_symlink(m_path));
    EXPECT_TRUE(fs::is_symlink(m_folder / "link"));
    EXPECT_EQ(readBytes(m_folder / "dir/target"), "new");
    EXPECT_THAT(names(), ElementsAre("dir", "file", "link"));
}

TEST_F(FileReplacementTest, MakesTheFileThatALinkPromises) {
    fs::create_symlink("promised", m_path);
    FileReplacement file;
    ASSERT_TRUE(file.open(m_path));
    EXPECT_TRUE(write(file, "new"));
    EXPECT_TRUE(file.commit());
    EXPECT_TRUE(fs::is_symlink(m_path));
    EXPECT_EQ(readBytes(m_folder / "promised"), "new");
}

TEST_F(FileReplacementTest, RefusesLinksThatLeadNowhere) {
    fs::create_symlink("file", m_path);
    FileReplacement file;
    EXPECT_FALSE(file.open(m_path));
    EXPECT_EQ(file.getError(), "Too many levels of symbolic links");
    EXPECT_TRUE(fs::is_symlink(m_path));
    EXPECT_THAT(names(), ElementsAre("file"));
}

// --- what is no file ---

TEST_F(FileReplacementTest, RefusesNamesOfNoFile) {
    writeBytes(m_path, "old");
    const struct {
        std::string path;
        const char* error;
    } cases[] = {
        {m_folder.path().string(), "Is a directory"},
        {m_folder / "missing/file", "No such file or directory"},
        {m_folder / "missing/", "No such file or directory"},
        {m_folder / "file/below", "Not a directory"},
        {m_folder / std::string(256, 'n'), "File name too long"},
        {"", "No such file or directory"},
    };
    for (const auto& [path, error] : cases) {
        FileReplacement file;
        EXPECT_FALSE(file.open(path, FileReplacement::InPlace::Allowed)) << path;
        EXPECT_EQ(file.getError(), error) << path;
    }
    EXPECT_THAT(names(), ElementsAre("file"));
}

// Each first sees that the device is there: a replacement would make a file in its place.
TEST_F(FileReplacementTest, WritesToADeviceDirectly) {
    ASSERT_TRUE(fs::is_character_file("/dev/null"));
    FileReplacement file;
    ASSERT_TRUE(file.open("/dev/null"));
    EXPECT_FALSE(file.isSeekable());
    EXPECT_TRUE(write(file, "bytes"));
    EXPECT_EQ(file.size(), 5u);
    EXPECT_TRUE(file.commit());
    EXPECT_TRUE(fs::is_character_file("/dev/null"));
}

TEST_F(FileReplacementTest, TellsOfAFullDevice) {
    ASSERT_TRUE(fs::is_character_file("/dev/full"));
    FileReplacement file;
    ASSERT_TRUE(file.open("/dev/full"));
    EXPECT_FALSE(write(file, "bytes"));
    EXPECT_EQ(file.getError(), "No space left on device");
    EXPECT_FALSE(file.commit());
    EXPECT_TRUE(fs::is_character_file("/dev/full"));
}

TEST_F(FileReplacementTest, DoesNotGoBackOnADevice) {
    for (const char* device : {"/dev/null", "/dev/full"}) {
        ASSERT_TRUE(fs::is_character_file(device));
        FileReplacement file;
        ASSERT_TRUE(file.open(device));
        EXPECT_FALSE(file.writeAt(0, "x", 1)) << device;
        EXPECT_NE(file.getError(), "");
        ASSERT_TRUE(file.open(device));
        EXPECT_FALSE(file.truncate(0)) << device;
    }
}

TEST_F(FileReplacementTest, WritesToAPipeDirectly) {
    ASSERT_EQ(::mkfifo(m_path.c_str(), 0600), 0);
    std::string read;
    std::thread reader([&] { read = readBytes(m_path); });
    {
        FileReplacement file;
        ASSERT_TRUE(file.open(m_path));
        EXPECT_FALSE(file.isSeekable());
        EXPECT_TRUE(write(file, "through the pipe"));
        EXPECT_TRUE(file.commit());
    }
    reader.join();
    EXPECT_EQ(read, "through the pipe");
    EXPECT_TRUE(fs::is_fifo(m_path));
}

TEST_F(FileReplacementTest, KeepsTheOldFileWhenTheDiskIsFull) {
    // A limit on the size of files stands for the full disk.
    writeBytes(m_path, "old");
    giveToUser(m_folder.path().string());
    giveToUser(m_path);
    EXPECT_EQ(asUser([&]() -> std::string {
                  std::signal(SIGXFSZ, SIG_IGN);
                  const rlimit limit{4096, 4096};
                  ::setrlimit(RLIMIT_FSIZE, &limit);
                  FileReplacement file;
                  if (!file.open(m_path) || !write(file, std::string(4000, 'x'))) {
                      return "open: " + file.getError();
                  }
                  if (write(file, std::string(4000, 'x')) || file.getError() != "File too large") {
                      return "write: " + file.getError();
                  }
                  return file.commit() ? "committed" : "";
              }),
              "");
    EXPECT_EQ(readBytes(m_path), "old");
    EXPECT_THAT(names(), ElementsAre("file"));
}

TEST_F(FileReplacementTest, FailsToCommitWhereTheFolderHasGone) {
    fs::create_directory(m_folder / "dir");
    FileReplacement file;
    ASSERT_TRUE(file.open(m_folder / "dir/file"));
    fs::remove_all(m_folder / "dir");
    EXPECT_FALSE(file.commit());
    EXPECT_EQ(file.getError(), "No such file or directory");
}

}  // namespace
