// SPDX-License-Identifier: MIT
#include <sys/stat.h>

#include <filesystem>

#include "KOVASMgrLog.h"
#include "KOVASMgrPaths.h"
#include "tests/harness/capture_stdout.h"
#include "tests/system/attached_host.h"

namespace fs = std::filesystem;

namespace {

class HostilePaths : public AttachedHost {};

class HostileDirectory : public HostilePaths, public testing::WithParamInterface<const char*> {};

mode_t ModeOf(const std::string& path) {
    struct stat status {};
    return stat(path.c_str(), &status) == 0 ? status.st_mode & 07777U : 0;
}

// Goes down until the current path has this many bytes; no single call takes so long a path.
void DescendTo(std::size_t length) {
    while (fs::current_path().string().size() < length) {
        const std::string name(200, 'd');
        fs::create_directory(name);
        fs::current_path(name);
    }
}

} // namespace

TEST_P(HostileDirectory, ALogDirectoryThatAShellWouldInterpretExecutesNothing) {
    const std::string directory = GetParam();
    fs::create_directories(directory);
    ASSERT_EQ(KOVAMGR_OK, KOVAMGR_Init(directory.c_str()));
    EXPECT_EQ(KOVAMGR_OK, KOVAMGR_Release());
    const std::string log = directory + (directory.back() == '\\' ? "" : "/") + "KOVASMgr.log";
    EXPECT_EQ(1, CountOf(FileText(log), "LEAVE CKOVASMgrPort::Release()"));
    EXPECT_EQ(0777U, ModeOf(log));
    for (const auto& entry : fs::recursive_directory_iterator(m_Scratch.Path())) {
        EXPECT_NE("x", entry.path().filename()) << "a command in the name was executed";
    }
    CheckThatANewManagerWorks();
}

INSTANTIATE_TEST_SUITE_P(Names, HostileDirectory,
                         testing::Values("a $(touch x) \"b\" `c`", "`touch x`", "$(touch x)",
                                         "a\"; touch x; \"", "a\\\" ; touch x #", "a\ntouch x",
                                         "a & touch x", "$HOME", "-R", "back\\slash\\", "a'b", "*",
                                         "!!", "~"));

TEST_F(HostilePaths, ADirectoryOfFiveThousandBytesDoesNotExist) {
    const std::string directory(5000, 'd');
    CaptureStdout output;
    EXPECT_EQ(KOVAMGR_ERR_PARAM, KOVAMGR_Init(directory.c_str()));
    EXPECT_EQ(0, KOVASMGR_LOG_INIT(directory.c_str()));
    std::string nested;
    while (nested.size() < 5000) {
        nested += "./";
    }
    EXPECT_EQ(KOVAMGR_ERR_PARAM, KOVAMGR_Init(nested.c_str()));
    EXPECT_EQ(0, KOVASMGR_LOG_INIT(nested.c_str()));
    EXPECT_EQ("", output.Text()) << "a path that does not fit is not tried";
    EXPECT_EQ(KOVAMGR_ERR_NOT_INIT, KOVAMGR_Open(1));
    CheckThatANewManagerWorks();
}

TEST_F(HostilePaths, AnAdapterInADirectoryDeeperThanThePathBuffersStillLoads) {
    DescendTo(1500);
    const std::string path = fs::current_path();
    ASSERT_GT(path.size(), 1023U);
    ASSERT_LT(path.size(), 4000U);
    fs::remove(m_Scratch.Path() + "/libOSAdapt.so");
    fs::create_symlink(ScratchDirectory::AdapterFile("complete"), "libOSAdapt.so");
    CheckThatANewManagerWorks();
    EXPECT_EQ(path.substr(0, 1023), GetCurrentPath());
    EXPECT_EQ(path.substr(0, 1023), GetKOVASMgrDllPath());
    EXPECT_EQ(path.substr(0, 1023), GetOSAdaptDllPath());
}

TEST_F(HostilePaths, APathJustBelowTheBuffersSizeIsCutInItsTail) {
    DescendTo(700);
    const std::size_t missing = 1020 - fs::current_path().string().size() - 1;
    fs::create_directory(std::string(missing, 'e'));
    fs::current_path(std::string(missing, 'e'));
    const std::string path = fs::current_path();
    ASSERT_EQ(1020U, path.size());
    EXPECT_EQ(path, GetCurrentPath());
    EXPECT_EQ(path + "/KO", GetKOVASMgrDllPath());
    EXPECT_EQ(path + "/li", GetOSAdaptDllPath());
}

TEST_F(HostilePaths, ADeletedCurrentDirectoryIsNoCurrentDirectory) {
    fs::create_directory("gone");
    fs::current_path("gone");
    fs::remove(m_Scratch.Path() + "/gone");
    EXPECT_STREQ("", GetCurrentPath());
    EXPECT_EQ(KOVAMGR_ERR_OSADAPT, KOVAMGR_Init(".")) << "no log can be opened there";
    EXPECT_EQ(KOVAMGR_ERR_OSADAPT, Init()) << "there is no adapter there";
    EXPECT_EQ(KOVAMGR_ERR_NOT_INIT, KOVAMGR_Open(1));
    fs::current_path(m_Scratch.Path());
    CheckThatANewManagerWorks();
}
