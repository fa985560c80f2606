// SPDX-License-Identifier: MIT
#include <pthread.h>

#include <filesystem>
#include <stdexcept>

#include "tests/api/host_test.h"
#include "tests/harness/capture_stdout.h"

namespace {

namespace fs = std::filesystem;

class HostInitFailure : public HostTest {
  protected:
    // The library is as if KOVAMGR_Init had never been called, and works at the next try.
    void ExpectNothingStaysBehind() {
        EXPECT_EQ(KOVAMGR_Open(1), 20003);
        EXPECT_EQ(KOVAMGR_GetPortState(1), 20003);
        EXPECT_FALSE(m_Fake->IsRegistered());
        m_Fake->ClearJournal();
        m_Fake->KeepNotifyingAfterUnRegister(true);
        m_Fake->NotifyOnThread(0);
        EXPECT_TRUE(m_Fake->Journal().empty()) << "nobody takes notices";
        m_Fake->Reset();
        FakeDevices().Device("Modem").Port("COM1").Apply(*m_Fake);
        EXPECT_EQ(Init(), 20000);
        EXPECT_EQ(Devices(), (Lines{"Modem: COM1 = 1"}));
    }
};

class HostWithIncompleteAdapter : public HostTest,
                                  public testing::WithParamInterface<const char*> {};

} // namespace

TEST_F(HostInitFailure, WithoutAnAdapterLeavesTheLogFileOnly) {
    fs::rename("libOSAdapt.so", "hidden");
    EXPECT_EQ(Init(), 20002);
    EXPECT_EQ(LogText(m_Scratch),
              Info("Load OSAdapte.dll fail") + Info("ENTER CKOVASMgrPort::Release()"));
    EXPECT_EQ(KOVAMGR_Open(1), 20003);
    fs::rename("hidden", "libOSAdapt.so");
    ExpectNothingStaysBehind();
}

TEST_F(HostInitFailure, InADeletedDirectoryFindsNoAdapter) {
    fs::create_directory("gone");
    fs::current_path("gone");
    fs::remove(m_Scratch.Path() + "/gone");
    EXPECT_EQ(Init(), 20002);
    fs::current_path(m_Scratch.Path());
    ExpectNothingStaysBehind();
}

TEST_P(HostWithIncompleteAdapter, FailsToInitialise) {
    m_Scratch.UseAdapter("lacks_" + std::string(GetParam()));
    EXPECT_EQ(Init(), 20002);
    EXPECT_EQ(KOVAMGR_Open(1), 20003);
    EXPECT_EQ(KOVAMGR_EnumeratePortInfo(std::make_unique<_KOVAMGR_DEVICEINFOLIST>().get()), 20003);
    EXPECT_EQ(LogText(m_Scratch),
              Info("Load OSAdapte.dll fail") + Info("ENTER CKOVASMgrPort::Release()"));
}

INSTANTIATE_TEST_SUITE_P(EachOfTheSeven, HostWithIncompleteAdapter,
                         testing::Values("OS_ADAPT_RegisterDeviceStateProcessCallBack",
                                         "OS_ADAPT_UnRegisterDeviceStateProcessCallBack",
                                         "OS_ADAPT_OpenPort", "OS_ADAPT_ClosePort",
                                         "OS_ADAPT_Write", "OS_ADAPT_Read",
                                         "OS_ADAPT_EnumDevicePortInfo"),
                         [](const auto& name) { return std::string(name.param); });

TEST_F(HostInitFailure, WhereNoLogCanBeWrittenTouchesNoAdapter) {
    fs::create_directories("blocked/KOVASMgr.log");
    CaptureStdout output;
    EXPECT_EQ(KOVAMGR_Init("blocked"), 20002);
    EXPECT_EQ(output.Text(), "Log file open failed!\n");
    EXPECT_TRUE(m_Fake->Journal().empty());
    ExpectNothingStaysBehind();
}

TEST_F(HostInitFailure, OfARefusedRegistrationUndoesAll) {
    m_Fake->SetResult(FakeCall::kRegister, OS_ADAPT_FAILED);
    EXPECT_EQ(Init(), 20002);
    EXPECT_EQ(m_Fake->Journal(), (Lines{"Enum 4", "Register = 30001", "UnRegister"}));
    ExpectNothingStaysBehind();
}

TEST_F(HostInitFailure, OfAReadThreadThatDoesNotStartUndoesAll) {
    FakeDevices().Device("Modem").Port("COM1").Apply(*m_Fake);
    pthread_attr_t attributes;
    pthread_attr_init(&attributes);
    size_t before = 0;
    pthread_attr_getstacksize(&attributes, &before);
    pthread_attr_setstacksize(&attributes, size_t{1} << 46); // more than any machine has
    ASSERT_EQ(pthread_setattr_default_np(&attributes), 0);

    EXPECT_EQ(Init(), 20002);

    pthread_attr_setstacksize(&attributes, before);
    ASSERT_EQ(pthread_setattr_default_np(&attributes), 0);
    pthread_attr_destroy(&attributes);
    EXPECT_EQ(m_Fake->Journal(), (Lines{"Enum 4", "UnRegister"}));
    ExpectNothingStaysBehind();
}

TEST_F(HostInitFailure, OfAnAdapterThatThrowsInItsEnumerationUndoesAll) {
    m_Fake->SetHook(FakeCall::kEnum, [] { throw std::runtime_error("broken"); });
    EXPECT_EQ(Init(), 20002);
    ExpectNothingStaysBehind();
}

TEST_F(HostInitFailure, OfAnAdapterThatThrowsInItsRegistrationUndoesAll) {
    m_Fake->SetHook(FakeCall::kRegister, [] { throw 5; });
    EXPECT_EQ(Init(), 20002);
    ExpectNothingStaysBehind();
}

// As a cancellation does, and for the same reason: the thread is to end, not the process.
TEST_F(HostInitFailure, AThreadThatAnAdapterEndsLeavesNoLockBehind) {
    m_Fake->SetHook(FakeCall::kEnum, [] { pthread_exit(nullptr); });
    std::string directory = m_Scratch.LogDirectory();
    pthread_t thread{};
    const auto initialise = [](void* logDir) -> void* {
        ADD_FAILURE() << "it returns with " << KOVAMGR_Init(static_cast<const char*>(logDir));
        return nullptr;
    };
    ASSERT_EQ(pthread_create(&thread, nullptr, initialise, directory.data()), 0);
    ASSERT_EQ(pthread_join(thread, nullptr), 0);
    m_Fake->SetHook(FakeCall::kEnum, nullptr);
    EXPECT_EQ(KOVAMGR_Release(), 20000);
    ExpectNothingStaysBehind();
}

TEST_F(HostInitFailure, OfAnIncompleteAdapterUnloadsIt) {
    fs::remove("libOSAdapt.so");
    m_Scratch.UseAdapter("lacks_OS_ADAPT_Read", "OSAdapt.so");
    ASSERT_FALSE(FakeAdapterLibrary::IsLoaded("./OSAdapt.so"));
    EXPECT_EQ(Init(), 20002);
    EXPECT_FALSE(FakeAdapterLibrary::IsLoaded("./OSAdapt.so"));
}
