// SPDX-License-Identifier: MIT
#include <filesystem>

#include "tests/api/host_test.h"

namespace {

namespace fs = std::filesystem;

using HostInit = HostTest;

// What lies in the current directory.
Lines Entries() {
    Lines names;
    for (const auto& entry : fs::recursive_directory_iterator(".")) {
        names.push_back(entry.path().filename());
    }
    return names;
}

} // namespace

TEST_F(HostInit, InNoDirectoryIsABadArgumentAndCreatesNothing) {
    const Lines before = Entries();
    EXPECT_EQ(KOVAMGR_Init(nullptr), 20001);
    EXPECT_EQ(KOVAMGR_Init(""), 20001);
    EXPECT_EQ(KOVAMGR_Init("missing"), 20001);
    EXPECT_EQ(KOVAMGR_Init("libOSAdapt.so"), 20001) << "a file";
    EXPECT_EQ(KOVAMGR_Init(std::string(5000, 'x').c_str()), 20001) << "too long for the system";
    EXPECT_EQ(Entries(), before);
    EXPECT_EQ(KOVAMGR_Open(1), 20003);
    EXPECT_TRUE(m_Fake->Journal().empty());
}

TEST_F(HostInit, OpensTheLogAndFindsThePorts) {
    FakeDevices().Device("Modem").Port("COM1").Port("COM2").Apply(*m_Fake);
    EXPECT_EQ(Init(), 20000);
    EXPECT_EQ(Devices(), (Lines{"Modem: COM1 = 1, COM2 = 2"}));
    EXPECT_EQ(LogText(m_Scratch),
              Info("Enter DetermineAddPort()") + Info("DetermineAddPort() Enum Device Count=1 !") +
                  Info("DetermineAddPort() Port of Device Count=2 !") + Info("COM1") +
                  Info("COM2") + Info("Leave DetermineAddPort()"));
}

TEST_F(HostInit, TakesADirectoryWithASeparatorAtItsEnd) {
    EXPECT_EQ(KOVAMGR_Init((m_Scratch.LogDirectory() + "/").c_str()), 20000);
    EXPECT_TRUE(fs::exists(m_Scratch.LogFile()));
}

TEST_F(HostInit, TwiceSucceedsAndChangesNothing) {
    InitWith(FakeDevices().Device("Modem").Port("COM1"));
    ASSERT_EQ(KOVAMGR_Open(1), 20000);
    const std::string log = LogText(m_Scratch);
    m_Fake->ClearJournal();
    FakeDevices().Device("Reader").Port("COM9").Apply(*m_Fake);

    EXPECT_EQ(Init(), 20000);

    EXPECT_TRUE(m_Fake->Journal().empty());
    EXPECT_EQ(Devices(), (Lines{"Modem: COM1 = 1"}));
    EXPECT_EQ(KOVAMGR_Write(1, "abc", 3, 0, nullptr), 3) << "the port is open still";
    EXPECT_EQ(LogText(m_Scratch), log);
}

TEST_F(HostInit, TwiceDoesNotLoadTheAdapterAgain) {
    InitWith(FakeDevices().Device("Modem").Port("COM1"));
    fs::remove("libOSAdapt.so");
    EXPECT_EQ(Init(), 20000);
    EXPECT_EQ(KOVAMGR_Open(1), 20000);
}

TEST_F(HostInit, TwiceMovesTheLogToAnotherDirectory) {
    InitWith(FakeDevices().Device("Modem").Port("COM1"));
    const std::string log = LogText(m_Scratch);
    fs::create_directory("other");
    EXPECT_EQ(KOVAMGR_Init("other"), 20000);
    ASSERT_EQ(KOVAMGR_Open(1), 20000);
    EXPECT_EQ(LogText("other/KOVASMgr.log"), Info("Open COM1 succeed."));
    EXPECT_EQ(LogText(m_Scratch), log);
}

TEST_F(HostInit, TwiceStillChecksItsArgument) {
    ASSERT_EQ(Init(), 20000);
    EXPECT_EQ(KOVAMGR_Init(""), 20001);
    EXPECT_EQ(KOVAMGR_Init("missing"), 20001);
    EXPECT_EQ(KOVAMGR_GetPortState(1), 20050) << "and stays initialised";
}

TEST_F(HostInit, TwiceFailsWhereNoLogCanBeWrittenAndStaysInitialised) {
    ASSERT_EQ(Init(), 20000);
    fs::create_directories("blocked/KOVASMgr.log");
    EXPECT_EQ(KOVAMGR_Init("blocked"), 20002);
    EXPECT_EQ(KOVAMGR_GetPortState(1), 20050);
}

TEST_F(HostInit, AfterReleaseBuildsAFreshManager) {
    InitWith(FakeDevices().Device("Modem").Port("COM1").Port("COM2"));
    ASSERT_EQ(KOVAMGR_RegisterCommDataReadCallback(OnRead<1>, 1), 20000);
    ASSERT_EQ(KOVAMGR_RegisterDeviceStateProcessCallback(OnState<1>), 20000);
    ASSERT_EQ(KOVAMGR_Release(), 20000);
    FakeDevices().Device("Modem").Port("COM2").Apply(*m_Fake);
    m_Fake->PushData("COM2", "hello");

    EXPECT_EQ(Init(), 20000);

    EXPECT_EQ(Devices(), (Lines{"Modem: COM2 = 1"})) << "numbers start at 1 again";
    ASSERT_EQ(KOVAMGR_RegisterCommDataReadCallback(OnRead<2>, 1), 20000);
    ASSERT_EQ(KOVAMGR_Open(1), 20000);
    EXPECT_TRUE(WaitForTold(1));
    EXPECT_TRUE(m_Fake->NotifyOnThread(5));
    EXPECT_EQ(m_Recorder.Told(), (Lines{"read 2: hello"})) << "the old callbacks are forgotten";
}

TEST_F(HostInit, AndReleaseCanBeRepeatedWithoutLosingThreadsOrDescriptors) {
    ASSERT_EQ(Init(), 20000);
    ASSERT_EQ(KOVAMGR_Release(), 20000);
    const auto descriptors = std::distance(fs::directory_iterator("/proc/self/fd"), {});
    const auto threads = std::distance(fs::directory_iterator("/proc/self/task"), {});
    for (int i = 0; i < 10; ++i) {
        ASSERT_EQ(Init(), 20000);
        ASSERT_EQ(KOVAMGR_Release(), 20000);
    }
    EXPECT_EQ(std::distance(fs::directory_iterator("/proc/self/fd"), {}), descriptors);
    EXPECT_EQ(std::distance(fs::directory_iterator("/proc/self/task"), {}), threads);
}
