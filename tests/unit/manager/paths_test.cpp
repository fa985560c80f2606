// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>

#include <cstring>
#include <filesystem>

#include "KOVASMgrPaths.h"
#include "tests/harness/scratch_directory.h"

namespace {

namespace fs = std::filesystem;

class Paths : public testing::Test {
  protected:
    // Makes a directory whose path has more than 1,023 bytes, the current one.
    static void GoDeep() {
        for (int i = 0; i < 6; ++i) {
            const std::string part(200, static_cast<char>('a' + i));
            fs::create_directory(part);
            fs::current_path(part);
        }
    }

    void GoWhereNothingIs() {
        fs::create_directory("gone");
        fs::current_path("gone");
        fs::remove(m_Scratch.Path() + "/gone");
    }

    ScratchDirectory m_Scratch;
};

} // namespace

TEST_F(Paths, TheCurrentPathIsReadAnewIntoTheSameBuffer) {
    char* const first = GetCurrentPath();
    EXPECT_EQ(std::string(first), m_Scratch.Path());
    fs::current_path("log");
    EXPECT_EQ(GetCurrentPath(), first);
    EXPECT_EQ(std::string(first), m_Scratch.LogDirectory());
    fs::current_path("..");
    EXPECT_EQ(std::string(GetCurrentPath()), m_Scratch.Path());
}

TEST_F(Paths, TheLibrarysPathStaysThatOfTheFirstCall) {
    char* const first = GetKOVASMgrDllPath();
    EXPECT_EQ(std::string(first), m_Scratch.Path() + "/KOVASMgr");
    fs::current_path("log");
    EXPECT_EQ(GetKOVASMgrDllPath(), first);
    EXPECT_EQ(std::string(first), m_Scratch.Path() + "/KOVASMgr");
}

TEST_F(Paths, TheAdaptersPathStaysThatOfTheFirstCall) {
    char* const first = GetOSAdaptDllPath();
    EXPECT_EQ(std::string(first), m_Scratch.Path() + "/libOSAdapt.dylib");
    fs::current_path("log");
    EXPECT_EQ(GetOSAdaptDllPath(), first);
    EXPECT_EQ(std::string(first), m_Scratch.Path() + "/libOSAdapt.dylib");
}

TEST_F(Paths, ThreeBuffersAreThree) {
    EXPECT_NE(GetCurrentPath(), GetKOVASMgrDllPath());
    EXPECT_NE(GetCurrentPath(), GetOSAdaptDllPath());
    EXPECT_NE(GetKOVASMgrDllPath(), GetOSAdaptDllPath());
}

TEST_F(Paths, ALongPathIsCutAt1023Bytes) {
    GoDeep();
    const std::string path = fs::current_path();
    ASSERT_GT(path.size(), 1100u);
    EXPECT_EQ(std::string(GetCurrentPath()), path.substr(0, 1023));
    EXPECT_EQ(std::string(GetKOVASMgrDllPath()), path.substr(0, 1023));
    EXPECT_EQ(std::string(GetOSAdaptDllPath()), path.substr(0, 1023));
}

TEST_F(Paths, AShortPathAfterALongOneHasNoRemains) {
    GoDeep();
    GetCurrentPath();
    fs::current_path("/");
    EXPECT_EQ(std::string(GetCurrentPath()), "/");
}

TEST_F(Paths, ADeletedDirectoryHasAnEmptyPath) {
    GetCurrentPath();
    GoWhereNothingIs();
    EXPECT_EQ(std::string(GetCurrentPath()), "");
    EXPECT_EQ(std::string(GetKOVASMgrDllPath()), "/KOVASMgr");
    EXPECT_EQ(std::string(GetOSAdaptDllPath()), "/libOSAdapt.dylib");
}
