#include "FileReplacementFixture.h"

#include <cstring>
#include <map>
#include <sys/xattr.h>

// Whose a file is that took another one's place, who may use it, and what is attached to it.
namespace {

using namespace file_replacement_test;

struct stat statusOf(const std::string& path) {
    struct stat status {};
    EXPECT_EQ(::stat(path.c_str(), &status), 0);
    return status;
}

std::map<std::string, std::string> attributesOf(const std::string& path) {
    char names[4096];
    const ssize_t size = ::listxattr(path.c_str(), names, sizeof(names));
    std::map<std::string, std::string> attributes;
    for (const char* name = names; name < names + size; name += std::strlen(name) + 1) {
        char value[4096];
        const ssize_t length = ::getxattr(path.c_str(), name, value, sizeof(value));
        attributes[name].assign(value, static_cast<std::size_t>(std::max<ssize_t>(length, 0)));
    }
    return attributes;
}

// An access list as the kernel takes it: owner rw, user 1234 rw, group nothing, mask rw, others nothing.
void giveAccessList(const std::string& path) {
    struct Entry {
        std::uint16_t tag;
        std::uint16_t permissions;
        std::uint32_t id;
    };
    struct {
        std::uint32_t version = 2;
        Entry entries[5] = {{1, 6, ~0U}, {2, 6, 1234}, {4, 0, ~0U}, {16, 6, ~0U}, {32, 0, ~0U}};
    } list;
    // Not every file system has access lists; without them the file has none before and none afterwards.
    static_cast<void>(::setxattr(path.c_str(), "system.posix_acl_access", &list, sizeof(list), 0) == 0);
}

TEST_F(FileReplacementTest, KeepsTheModeOfTheFileItReplaces) {
    for (const mode_t mode : {0600u, 0644u, 0751u, 0444u, 01777u}) {
        fs::remove(m_path);
        writeBytes(m_path, "old");
        ASSERT_EQ(::chmod(m_path.c_str(), mode), 0);
        FileReplacement file;
        if (::geteuid() != 0 && (mode & 0200u) == 0) {
            EXPECT_FALSE(file.open(m_path)) << "it may not be written";
            continue;
        }
        ASSERT_TRUE(file.open(m_path));
        EXPECT_TRUE(file.commit());
        EXPECT_EQ(modeOf(m_path), mode);
    }
}

TEST_F(FileReplacementTest, GivesANewFileWhatTheUsersMaskLeaves) {
    for (const mode_t mask : {022u, 077u, 0u}) {
        const mode_t before = ::umask(mask);
        fs::remove(m_path);
        FileReplacement file;
        EXPECT_TRUE(file.open(m_path));
        EXPECT_TRUE(file.commit());
        ::umask(before);
        EXPECT_EQ(modeOf(m_path), 0666u & ~mask);
    }
}

TEST_F(FileReplacementTest, KeepsTheOwnerWhereItMay) {
    writeBytes(m_path, "old");
    giveToUser(m_path);
    struct stat before {};
    ASSERT_EQ(::stat(m_path.c_str(), &before), 0);
    FileReplacement file;
    ASSERT_TRUE(file.open(m_path));
    EXPECT_TRUE(file.commit());
    struct stat after {};
    ASSERT_EQ(::stat(m_path.c_str(), &after), 0);
    EXPECT_EQ(after.st_uid, before.st_uid);
    EXPECT_EQ(after.st_gid, before.st_gid);
    EXPECT_NE(after.st_ino, before.st_ino) << "it is another file";
}

TEST_F(FileReplacementTest, KeepsTheAccessListAndWhatElseIsAttached) {
    writeBytes(m_path, "old");
    ASSERT_EQ(::chmod(m_path.c_str(), 0600), 0);
    static_cast<void>(::setxattr(m_path.c_str(), "user.note", "of a user", 9, 0) == 0);
    static_cast<void>(::setxattr(m_path.c_str(), "user.empty", "", 0, 0) == 0);
    giveAccessList(m_path);
    const auto attributes = attributesOf(m_path);
    const mode_t mode = modeOf(m_path);
    for (const auto inPlace : {FileReplacement::InPlace::Refused, FileReplacement::InPlace::Allowed}) {
        FileReplacement file;
        ASSERT_TRUE(file.open(m_path, inPlace));
        EXPECT_TRUE(write(file, "new"));
        EXPECT_TRUE(file.commit());
        EXPECT_EQ(readBytes(m_path), "new");
        EXPECT_EQ(attributesOf(m_path), attributes);
        EXPECT_EQ(modeOf(m_path), mode);
    }
}

TEST_F(FileReplacementTest, GivesNoAccessListThatOnlyTheFolderHandsOut) {
    writeBytes(m_path, "old");
    ASSERT_EQ(::chmod(m_path.c_str(), 0640), 0);
    giveAccessList(m_folder.path().string());
    const std::string list = attributesOf(m_folder.path().string())["system.posix_acl_access"];
    static_cast<void>(::setxattr(m_folder.path().c_str(), "system.posix_acl_default", list.data(), list.size(), 0) ==
                      0);
    FileReplacement file;
    ASSERT_TRUE(file.open(m_path));
    EXPECT_TRUE(file.commit());
    EXPECT_THAT(attributesOf(m_path), IsEmpty());
    EXPECT_EQ(modeOf(m_path), 0640u);
}

/// Somebody else's file, which all may write, in a folder that takes new files. Only root can make one; the tests of
/// others see a file of their own.
class FileReplacementForeignFile : public FileReplacementTest {
protected:
    FileReplacementForeignFile() {
        writeBytes(m_path, "old and longer");
        ::chmod(m_path.c_str(), 0666);
        ::chmod(m_folder.path().c_str(), 0777);
        m_before = statusOf(m_path);
    }

    std::string replace(FileReplacement::InPlace inPlace) {
        return asUser([&]() -> std::string {
            FileReplacement file;
            return file.open(m_path, inPlace) && write(file, "new") && file.commit() ? "" : file.getError();
        });
    }

    struct stat m_before {};
};

TEST_F(FileReplacementForeignFile, StaysItsOwnersWhereWritingInPlaceIsAllowed) {
    EXPECT_EQ(replace(FileReplacement::InPlace::Allowed), "");
    EXPECT_EQ(readBytes(m_path), "new");
    const struct stat after = statusOf(m_path);
    EXPECT_EQ(after.st_uid, m_before.st_uid);
    EXPECT_EQ(after.st_gid, m_before.st_gid);
    EXPECT_EQ(after.st_mode, m_before.st_mode);
    EXPECT_EQ(after.st_ino == m_before.st_ino, ::geteuid() == 0) << "it is the same file, of the same owner";
    EXPECT_THAT(names(), ElementsAre("file"));
}

TEST_F(FileReplacementForeignFile, IsTakenOverWithoutTheRightsOfItsOwnerWhereItIsNot) {
    ASSERT_EQ(::chmod(m_path.c_str(), 04666), 0);
    EXPECT_EQ(replace(FileReplacement::InPlace::Refused), "");
    EXPECT_EQ(readBytes(m_path), "new");
    EXPECT_EQ(modeOf(m_path), ::geteuid() == 0 ? 0666u : 04666u);
    EXPECT_THAT(names(), ElementsAre("file"));
}

}  // namespace
