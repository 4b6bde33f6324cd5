#include "shell/OutputPlaces.h"

#include "Command.h"
#include "shell/Diagnostics.h"
#include "shell/InputNames.h"

#include <gtest/gtest.h>

#include <atomic>
#include <cstdlib>
#include <fcntl.h>
#include <filesystem>
#include <fstream>
#include <string>
#include <sys/stat.h>
#include <vector>

namespace {

std::atomic<std::size_t> g_looks = 0;

}  // namespace

// In place of those of the system: count how often the command looks at a file.
extern "C" int stat(const char* path, struct stat* pStatus) noexcept {
    ++g_looks;
    return ::fstatat(AT_FDCWD, path, pStatus, 0);
}

extern "C" int lstat(const char* path, struct stat* pStatus) noexcept {
    ++g_looks;
    return ::fstatat(AT_FDCWD, path, pStatus, AT_SYMLINK_NOFOLLOW);
}

namespace Zantrix::Cli {
namespace {

namespace fs = std::filesystem;

class OutputPlacesTest : public ::testing::Test {
protected:
    OutputPlacesTest() {
        std::string name = (fs::temp_directory_path() / "murvane-audio-XXXXXX").string();
        m_folder = ::mkdtemp(name.data());
    }

    ~OutputPlacesTest() override { fs::remove_all(m_folder); }

    std::string path(const std::string& name) const { return (m_folder / name).string(); }

    std::string write(const std::string& name) const {
        std::ofstream(path(name)) << "content";
        return path(name);
    }

    fs::path m_folder;
};

std::string refusalOf(const auto& call) {
    try {
        call();
    } catch (const UsageError& error) {
        return error.what();
    }
    return {};
}

TEST_F(OutputPlacesTest, StandardOutputAndDevicesAreNoPlaces) {
    OutputPlaces places;
    for (const char* output : {"", "", "/dev/null", "/dev/null"}) {
        EXPECT_EQ(refusalOf([&] { places.add(output); }), "");
    }
    EXPECT_FALSE(places.replaceAny());
    EXPECT_EQ(refusalOf([&] { places.refuseToReplace("/dev/null"); }), "");
}

TEST_F(OutputPlacesTest, NewFilesAreToldApartByFolderAndName) {
    OutputPlaces places;
    places.add(path("a"));
    places.add(path("b"));
    fs::create_directory_symlink(m_folder, path("link"));
    for (const char* same : {"a", "./a", "././a", "link/a", "link/./b"}) {
        EXPECT_EQ(refusalOf([&] { places.add(path(same)); }), "two outputs would go to " + path(same));
    }
    fs::create_directory(path("folder"));
    EXPECT_EQ(refusalOf([&] { places.add(path("folder/a")); }), "");
    EXPECT_FALSE(places.replaceAny());
}

TEST_F(OutputPlacesTest, LinksAreFollowed) {
    write("a");
    fs::create_symlink("a", path("b"));
    fs::create_symlink(path("new"), path("c"));
    OutputPlaces places;
    places.add(path("b"));
    places.add(path("c"));
    for (const char* name : {"a", "b", "c", "new"}) {
        EXPECT_EQ(refusalOf([&] { places.add(path(name)); }), "two outputs would go to " + path(name));
    }
}

TEST_F(OutputPlacesTest, TwoNamesOfOneFileAreTwoPlaces) {
    write("a");
    fs::create_hard_link(path("a"), path("b"));
    OutputPlaces places;
    places.add(path("a"));
    EXPECT_EQ(refusalOf([&] { places.add(path("b")); }), "");
}

TEST_F(OutputPlacesTest, NoNameOfAFileThatIsReadIsReplaced) {
    write("a");
    fs::create_symlink("a", path("b"));
    fs::create_hard_link(path("a"), path("c"));
    for (const char* name : {"a", "b", "c"}) {
        OutputPlaces places;
        places.add(path("a"));
        EXPECT_TRUE(places.replaceAny());
        EXPECT_EQ(refusalOf([&] { places.refuseToReplace(path(name)); }),
                  "the output " + path("a") + " would replace the input " + path(name));
        EXPECT_EQ(refusalOf([&] { places.refuseToReplace(path("none")); }), "");
    }
}

TEST_F(OutputPlacesTest, AnInputGetsAllOfItsPlacesOrNone) {
    OutputPlaces places;
    EXPECT_FALSE(places.add({path("a"), path("b")}, 0));
    const auto taken = places.add({path("c"), path("b")}, 1);
    ASSERT_TRUE(taken);
    EXPECT_EQ(taken->path, path("b"));
    EXPECT_EQ(taken->owner, 0U);
    EXPECT_FALSE(places.add({path("c")}, 2));
    const auto own = places.add({path("d"), path("./d")}, 3);
    ASSERT_TRUE(own);
    EXPECT_EQ(own->owner, 3U);
    EXPECT_FALSE(places.add({path("d")}, 4));
}

TEST_F(OutputPlacesTest, NoInputGetsAPlaceOfTheRunItself) {
    OutputPlaces places;
    places.add(path("failures"));
    EXPECT_EQ(refusalOf([&] {
                  places.add({path("a"), path("./failures")}, 0);
              }),
              "two outputs would go to " + path("./failures"));
}

TEST_F(OutputPlacesTest, EachInputIsLookedAtOnceHoweverManyOutputsThereAre) {
    constexpr std::size_t count = 3000;
    InputArguments arguments;
    OutputPlaces places;
    std::vector<std::string> outputs;
    for (std::size_t i = 0; i < count; ++i) {
        arguments.files.push_back(path("in" + std::to_string(i)));
        outputs.push_back(write("out" + std::to_string(i)));
    }
    Diagnostics diagnostics({});
    InputNames inputs;
    ASSERT_TRUE(inputs.gather(arguments, diagnostics));
    g_looks = 0;
    for (std::size_t i = 0; i < count; ++i) {
        EXPECT_FALSE(places.add({outputs[i]}, i));
    }
    EXPECT_LE(g_looks, count + 1);  // and the folder
    EXPECT_GE(g_looks, count);
    g_looks = 0;
    inputs.refuseToOverwrite(places);
    EXPECT_LE(g_looks, count + 1);  // and the list
    EXPECT_GE(g_looks, count);
}

}  // namespace
}  // namespace Zantrix::Cli
