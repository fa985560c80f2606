// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>
#include <sys/auxv.h>
#include <sys/file.h>
#include <unistd.h>

#include <fcntl.h>

#include <filesystem>
#include <fstream>

#include "tests/harness/scratch_directory.h"
#include "tests/unit/common/loaded_adapter.h"

namespace {

namespace fs = std::filesystem;

bool g_HasRaisedPrivileges = false;

// The adapter directory that this program is built with, made anew for each case. The cases run in
// processes of their own, so one at a time is let in.
class AdapterDirectory : public testing::Test {
  protected:
    AdapterDirectory() : m_Lock(open(KOVASMGR_ADAPTER_DIR ".lock", O_CREAT | O_RDWR, 0600)) {
        flock(m_Lock, LOCK_EX);
        fs::remove_all(KOVASMGR_ADAPTER_DIR);
        fs::create_directories(KOVASMGR_ADAPTER_DIR);
    }
    ~AdapterDirectory() override {
        fs::remove_all(KOVASMGR_ADAPTER_DIR);
        close(m_Lock);
    }

    static void Install(const std::string& adapter, const std::string& name) {
        fs::create_symlink(ScratchDirectory::AdapterFile(adapter),
                           fs::path(KOVASMGR_ADAPTER_DIR) / name);
    }

    std::string Load() const {
        JLibrary library(m_Scratch.Path() + "/OSAdapt");
        const std::string loaded = LoadedAdapter(library);
        library.unload();
        return loaded;
    }

    int m_Lock;
    ScratchDirectory m_Scratch;
};

TEST_F(AdapterDirectory, IsUsedWhenThePathsDirectoryHasNone) {
    Install("complete", "libOSAdapt.so");
    EXPECT_EQ(Load(), "complete");
}

TEST_F(AdapterDirectory, ComesSecond) {
    Install("complete", "libOSAdapt.so");
    m_Scratch.UseAdapter("lacks_OS_ADAPT_Read", "OSAdapt");
    EXPECT_EQ(Load(), "lacks_OS_ADAPT_Read");
}

TEST_F(AdapterDirectory, IsSearchedByTheSameThreeNames) {
    Install("lacks_OS_ADAPT_Read", "OSAdapt");
    EXPECT_EQ(Load(), "lacks_OS_ADAPT_Read");
    Install("lacks_OS_ADAPT_Write", "OSAdapt.so");
    EXPECT_EQ(Load(), "lacks_OS_ADAPT_Write");
    Install("complete", "libOSAdapt.so");
    EXPECT_EQ(Load(), "complete");
}

TEST_F(AdapterDirectory, DoesNotReplaceAFileThatDoesNotLoad) {
    Install("complete", "libOSAdapt.so");
    std::ofstream("libOSAdapt.so") << "no library";
    EXPECT_EQ(Load(), "nothing");
}

TEST_F(AdapterDirectory, IsTheOnlyOneForAProcessWithRaisedPrivileges) {
    m_Scratch.UseAdapter("lacks_OS_ADAPT_Read", "libOSAdapt.so");
    EXPECT_EQ(Load(), "lacks_OS_ADAPT_Read");
    g_HasRaisedPrivileges = true;
    EXPECT_EQ(Load(), "nothing");
    Install("complete", "libOSAdapt.so");
    EXPECT_EQ(Load(), "complete");
}

TEST_F(AdapterDirectory, MayBeMissing) {
    fs::remove_all(KOVASMGR_ADAPTER_DIR);
    EXPECT_EQ(Load(), "nothing");
}

} // namespace

// What the library handle of this program asks; the build gives the function another name.
extern "C" unsigned long getauxval(unsigned long kind) noexcept {
    return kind == AT_SECURE && g_HasRaisedPrivileges ? 1 : 0;
}
