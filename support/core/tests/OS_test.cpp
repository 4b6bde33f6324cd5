#include <murvane/core/OS.h>
#include <testkit/WavFixture.h>

#include <gtest/gtest.h>

#include <filesystem>
#include <string>

namespace {

namespace fs = std::filesystem;
using Zantrix::OS::getCanonicalPath;
using Zantrix::OS::isPathRelative;
using Zantrix::OS::stripPathAndExtension;

TEST(OSPaths, AreRelativeUnlessTheyAreRooted) {
    for (const char* name : {"", "a", "a/b", "./a", "../a", "a:b/c"}) {
        EXPECT_EQ(isPathRelative(name), std::string(name) != "a:b/c") << name;
    }
    for (const char* name : {"/", "/a", "\\", "\\\\server\\a", "C:", "c:\\a", "z:/a", "C:a"}) {
        EXPECT_FALSE(isPathRelative(name)) << name;
    }
    for (const char* name : {"1:a", ":a", "ab:c", " /a", "\xc3\xa4:a"}) {
        EXPECT_TRUE(isPathRelative(name)) << name;
    }
}

TEST(OSPaths, LoseTheirFoldersAndTheirLastExtension) {
    EXPECT_EQ(stripPathAndExtension("dir/call1.wav"), "call1");
    EXPECT_EQ(stripPathAndExtension("C:\\dir\\call1.wav"), "call1");
    EXPECT_EQ(stripPathAndExtension("a/b\\call.1.wav"), "call.1");
    EXPECT_EQ(stripPathAndExtension("call1"), "call1");
    EXPECT_EQ(stripPathAndExtension("dir.d/call1"), "call1");
    EXPECT_EQ(stripPathAndExtension("dir/"), "");
    EXPECT_EQ(stripPathAndExtension(""), "");
}

class CanonicalPath : public testing::Test {
protected:
    CanonicalPath() : m_root(fs::canonical(m_folder.path()).string()) {
        fs::create_directories(m_root + "/dir/sub");
        testkit::writeBytes(m_root + "/dir/file", "");
    }

    static std::string canonical(const std::string& path) {
        std::string out = "unchanged";
        EXPECT_TRUE(getCanonicalPath(path.c_str(), out)) << path;
        return out;
    }

    testkit::TemporaryFolder m_folder;
    const std::string m_root;
};

TEST_F(CanonicalPath, ResolvesDots) {
    EXPECT_EQ(canonical(m_root + "/dir/./sub/../file"), m_root + "/dir/file");
    EXPECT_EQ(canonical(m_root + "//dir///file"), m_root + "/dir/file");
    EXPECT_EQ(canonical("/../.."), "/");
}

TEST_F(CanonicalPath, NeverEndsWithASeparator) {
    EXPECT_EQ(canonical(m_root + "/dir/"), m_root + "/dir");
    EXPECT_EQ(canonical(m_root + "/missing/"), m_root + "/missing");
    EXPECT_EQ(canonical(m_root + "/missing/./"), m_root + "/missing");
}

TEST_F(CanonicalPath, TakesBackslashesForSlashes) {
    EXPECT_EQ(canonical(m_root + "\\dir\\sub\\..\\file"), m_root + "/dir/file");
}

TEST_F(CanonicalPath, NeedsNoFile) {
    EXPECT_EQ(canonical(m_root + "/dir/missing/../other.wav"), m_root + "/dir/other.wav");
    EXPECT_EQ(canonical(m_root + "/no/such/folder/a.wav"), m_root + "/no/such/folder/a.wav");
    EXPECT_EQ(canonical("/missing-folder-of-this-test/a"), "/missing-folder-of-this-test/a");
}

TEST_F(CanonicalPath, FollowsLinks) {
    fs::create_directory_symlink(m_root + "/dir", m_root + "/link");
    EXPECT_EQ(canonical(m_root + "/link/file"), m_root + "/dir/file");
    EXPECT_EQ(canonical(m_root + "/link/sub/.."), m_root + "/dir");
    EXPECT_EQ(canonical(m_root + "/link/missing"), m_root + "/dir/missing");
    fs::create_symlink("dir/file", m_root + "/filelink");
    EXPECT_EQ(canonical(m_root + "/filelink"), m_root + "/dir/file");
}

TEST_F(CanonicalPath, TakesRelativeNamesFromTheWorkingFolder) {
    const fs::path before = fs::current_path();
    fs::current_path(m_root + "/dir");
    EXPECT_EQ(canonical("file"), m_root + "/dir/file");
    EXPECT_EQ(canonical("."), m_root + "/dir");
    EXPECT_EQ(canonical("../dir/sub"), m_root + "/dir/sub");
    EXPECT_EQ(canonical("missing/a.wav"), m_root + "/dir/missing/a.wav");
    EXPECT_EQ(canonical("missing\\..\\b.wav"), m_root + "/dir/b.wav");
    EXPECT_EQ(canonical("../../../../../../../../missing"), "/missing");
    fs::current_path(before);
}

TEST_F(CanonicalPath, FailsForNoPathAndLeavesTheOutputAlone) {
    std::string out = "unchanged";
    EXPECT_FALSE(getCanonicalPath(nullptr, out));
    EXPECT_FALSE(getCanonicalPath("", out));
    fs::create_symlink("loop", m_root + "/loop");
    EXPECT_FALSE(getCanonicalPath((m_root + "/loop").c_str(), out));
    EXPECT_EQ(out, "unchanged");
}

}  // namespace
