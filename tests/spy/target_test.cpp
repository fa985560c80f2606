// SPDX-License-Identifier: MIT
//
// Which adapter the spy passes calls on to.
#include <dlfcn.h>
#include <unistd.h>

#include <filesystem>

#include "OSAdaptLine.h"
#include "OSAdaptScenario.h"
#include "tests/spy/spy_bench.h"

namespace {

namespace fs = std::filesystem;

class SpyTarget : public SpyBench {
  protected:
    // All calls fail, and the log has the reason once.
    void ExpectNothingWorks(const std::string& reason) const {
        const AdapterUnderTest spy(KOVASMGR_SPY);
        _OS_ADAPT_DEVICEPORTLIST list{};
        for (int i = 0; i < 2; ++i) {
            long count = 0;
            char byte = 0;
            EXPECT_EQ(OS_ADAPT_FAILED, spy.Enumerate(OS_ADAPT_ENUM_ALL, &list));
            EXPECT_EQ(OS_ADAPT_FAILED, spy.Register([](_OS_ADAPT_DEVICESTATUS_TYPE) {}));
            EXPECT_EQ(OS_ADAPT_FAILED, spy.UnRegister(nullptr));
            EXPECT_EQ(OS_ADAPT_NO_HANDLE, spy.OpenPort("COM1"));
            EXPECT_EQ(OS_ADAPT_FAILED, spy.Close(1));
            EXPECT_EQ(OS_ADAPT_FAILED, spy.Write(1, "x", 1, &count));
            EXPECT_EQ(OS_ADAPT_FAILED, spy.Read(1, &byte, 1, &count));
        }
        EXPECT_EQ(1, LogLines(reason)) << Log();
        EXPECT_EQ(1, LogLines("the spy passes nothing on")) << Log();
    }

    std::string DirectoryWith(const fs::path& file) const {
        const fs::path directory = fs::path(m_Scratch.Path()) / "other";
        fs::create_directory(directory);
        fs::create_symlink(file, directory / "libOSAdapt.so");
        return directory.string();
    }
};

} // namespace

TEST_F(SpyTarget, IsTheAdapterInANamedDirectory) {
    const FakeAdapterLibrary fake(FakeFile());
    FakeDevices().Device("Modem").Port("COM1").Apply(*fake);
    const AdapterUnderTest spy(KOVASMGR_SPY);
    EXPECT_EQ("Modem(COM1)", spy.DevicesText());
}

TEST_F(SpyTarget, IsAnAdapterBesideTheSpyByItsName) {
    Set("ADAPTER", "virtual");
    const AdapterUnderTest spy(KOVASMGR_SPY);
    EXPECT_NE(std::string::npos, spy.DevicesText().find("virtual-modem"));
}

TEST_F(SpyTarget, IsFoundBesideTheSpyAlsoThroughALinkToIt) {
    Set("ADAPTER", "virtual");
    const AdapterUnderTest spy(DirectoryWith(KOVASMGR_SPY) + "/libOSAdapt.so");
    EXPECT_NE(std::string::npos, spy.DevicesText().find("virtual-modem"));
}

TEST_F(SpyTarget, MayBeMissing) {
    Set("ADAPTER", "nobodys");
    ExpectNothingWorks("there is no adapter 'nobodys' in ");
}

TEST_F(SpyTarget, MayBeAnEmptyDirectory) {
    Set("ADAPTER", m_Scratch.LogDirectory());
    ExpectNothingWorks("holds no libOSAdapt.so");
}

TEST_F(SpyTarget, MustBeNamedByAnAbsolutePath) {
    Set("ADAPTER", "../virtual");
    ExpectNothingWorks("must be a name or an absolute path, not '../virtual'");
}

TEST_F(SpyTarget, MayBeNoLibrary) {
    Set("ADAPTER", DirectoryWith("/etc/passwd"));
    ExpectNothingWorks("does not load: ");
}

TEST_F(SpyTarget, MayLackAFunction) {
    const std::string file = ScratchDirectory::AdapterFile("lacks_OS_ADAPT_Read");
    Set("ADAPTER", file.substr(0, file.rfind('/')));
    ExpectNothingWorks("lacks OS_ADAPT_Read");
}

TEST_F(SpyTarget, IsNeverTheSpyItself) {
    Set("ADAPTER", "spy");
    ExpectNothingWorks("is the spy itself");
}

TEST_F(SpyTarget, IsNeverTheSpyItselfByALink) {
    Set("ADAPTER", DirectoryWith(KOVASMGR_SPY));
    ExpectNothingWorks("is the spy itself");
}

TEST_F(SpyTarget, IsNeverTheSpyItselfByASecondName) {
    const std::string directory = m_Scratch.Path() + "/other";
    fs::create_directory(directory);
    ASSERT_EQ(0, link(KOVASMGR_SPY, (directory + "/libOSAdapt.so").c_str()));
    Set("ADAPTER", directory);
    ExpectNothingWorks("is the spy itself");
}

TEST_F(SpyTarget, DoesWhatItHasBeyondTheSevenFunctions) {
    Set("ADAPTER", "linux");
    const AdapterUnderTest spy(KOVASMGR_SPY);
    void* const library = dlopen(KOVASMGR_SPY, RTLD_NOW | RTLD_NOLOAD);
    ASSERT_NE(nullptr, library);
    const auto setLine = reinterpret_cast<OSADAPT_SET_LINE>(dlsym(library, OSADAPT_SET_LINE_NAME));
    ASSERT_NE(nullptr, setLine);
    EXPECT_EQ(OS_ADAPT_FAILED, setLine(nullptr, "9600"));
    EXPECT_EQ(1, LogLines("OSADAPT_SetLine: the port's name is null"));
    dlclose(library);
}

TEST_F(SpyTarget, SaysSoWhenItHasNothingBeyondTheSevenFunctions) {
    const AdapterUnderTest spy(KOVASMGR_SPY);
    void* const library = dlopen(KOVASMGR_SPY, RTLD_NOW | RTLD_NOLOAD);
    const auto setLine = reinterpret_cast<OSADAPT_SET_LINE>(dlsym(library, OSADAPT_SET_LINE_NAME));
    const auto check =
        reinterpret_cast<OSADAPT_CHECK_SCENARIO>(dlsym(library, OSADAPT_CHECK_SCENARIO_NAME));
    EXPECT_EQ(OS_ADAPT_FAILED, setLine("COM1", "9600"));
    char reason[128] = "";
    EXPECT_EQ(OS_ADAPT_FAILED, check("a.toml", reason, sizeof reason));
    EXPECT_STREQ("the adapter behind the spy checks no scenarios", reason);
    EXPECT_EQ(OS_ADAPT_FAILED, check("a.toml", nullptr, 0));
    EXPECT_EQ(1, LogLines("the adapter behind the spy has no OSADAPT_SetLine"));
    EXPECT_EQ(1, LogLines("the adapter behind the spy has no OSADAPT_CheckScenario"));
    dlclose(library);
}
