// SPDX-License-Identifier: MIT
//
// The adapter directory that is fixed when the library is built. For this program it is "installed"
// in the current directory, so that each test has one of its own.
#include <filesystem>
#include <fstream>

#include "tests/unit/manager/manager_test.h"

namespace {

namespace fs = std::filesystem;

class AdapterDirectory : public ManagerTest {
  protected:
    void Install(const std::string& adapter) {
        fs::create_directory("installed");
        m_Scratch.UseAdapter(adapter, "installed/libOSAdapt.so");
    }
};

} // namespace

TEST_F(AdapterDirectory, IsUsedWhenTheCurrentDirectoryHasNoAdapter) {
    Install("complete");
    fs::remove("libOSAdapt.so");
    EXPECT_EQ(m_Manager.Init(), 20000);
}

TEST_F(AdapterDirectory, HasTheSameThreeFileNames) {
    Install("lacks_OS_ADAPT_Read");
    fs::remove("libOSAdapt.so");
    fs::remove("installed/libOSAdapt.so");
    m_Scratch.UseAdapter("complete", "installed/OSAdapt");
    EXPECT_EQ(m_Manager.Init(), 20000);
}

TEST_F(AdapterDirectory, ComesAfterTheCurrentDirectory) {
    Install("lacks_OS_ADAPT_Read");
    EXPECT_EQ(m_Manager.Init(), 20000);
}

TEST_F(AdapterDirectory, ComesAfterEveryFileNameInTheCurrentDirectory) {
    Install("lacks_OS_ADAPT_Read");
    fs::remove("libOSAdapt.so");
    m_Scratch.UseAdapter("complete", "OSAdapt");
    EXPECT_EQ(m_Manager.Init(), 20000);
}

TEST_F(AdapterDirectory, DoesNotReplaceAnAdapterThatIsIncomplete) {
    Install("complete");
    fs::remove("libOSAdapt.so");
    m_Scratch.UseAdapter("lacks_OS_ADAPT_Read", "OSAdapt.so");
    EXPECT_EQ(m_Manager.Init(), 20002);
}

TEST_F(AdapterDirectory, DoesNotReplaceAFileThatDoesNotLoad) {
    Install("complete");
    fs::remove("libOSAdapt.so");
    std::ofstream("OSAdapt") << "no library";
    EXPECT_EQ(m_Manager.Init(), 20002);
}

TEST_F(AdapterDirectory, WithoutAnAdapterFails) {
    fs::remove("libOSAdapt.so");
    EXPECT_EQ(m_Manager.Init(), 20002);
}
