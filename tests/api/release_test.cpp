// SPDX-License-Identifier: MIT
#include <atomic>
#include <filesystem>

#include "tests/api/host_test.h"

namespace {

namespace fs = std::filesystem;

using HostRelease = HostTest;

} // namespace

TEST_F(HostRelease, BeforeInitSucceedsAgainAndAgain) {
    EXPECT_EQ(KOVAMGR_Release(), 20000);
    EXPECT_EQ(KOVAMGR_Release(), 20000);
    EXPECT_FALSE(fs::exists(m_Scratch.LogFile()));
}

TEST_F(HostRelease, TwiceInARowSucceedsBothTimes) {
    ASSERT_EQ(Init(), 20000);
    EXPECT_EQ(KOVAMGR_Release(), 20000);
    const std::string log = LogText(m_Scratch);
    EXPECT_EQ(KOVAMGR_Release(), 20000);
    EXPECT_EQ(LogText(m_Scratch), log);
}

TEST_F(HostRelease, ClosesWhatIsOpenInListOrderAndUnregisters) {
    InitWith(FakeDevices().Device("Modem").Port("COM1").Port("COM2").Device("Reader").Port("COM3"));
    ASSERT_EQ(KOVAMGR_Open(3), 20000);
    ASSERT_EQ(KOVAMGR_Open(1), 20000);
    m_Fake->ClearJournal();
    EXPECT_EQ(KOVAMGR_Release(), 20000);
    EXPECT_EQ(m_Fake->Journal(), (Lines{"Close 2", "Close 1", "UnRegister"}));
    EXPECT_FALSE(m_Fake->IsRegistered());
}

TEST_F(HostRelease, SucceedsWhateverTheAdapterAnswers) {
    InitWith(FakeDevices().Device("Modem").Port("COM1"));
    ASSERT_EQ(KOVAMGR_Open(1), 20000);
    m_Fake->SetResult(FakeCall::kClose, OS_ADAPT_FAILED);
    m_Fake->SetResult(FakeCall::kUnRegister, OS_ADAPT_FAILED);
    EXPECT_EQ(KOVAMGR_Release(), 20000);
    EXPECT_EQ(m_Fake->Journal(),
              (Lines{"Open COM1 -> 1", "Close 1 = 30001", "UnRegister = 30001"}));
    EXPECT_EQ(KOVAMGR_Open(1), 20003);
}

TEST_F(HostRelease, UnloadsTheAdapter) {
    fs::remove("libOSAdapt.so"); // the one that this test holds itself
    fs::copy_file(ScratchDirectory::AdapterFile("complete"), "OSAdapt.so");
    ASSERT_EQ(Init(), 20000);
    EXPECT_TRUE(FakeAdapterLibrary::IsLoaded("./OSAdapt.so"));
    ASSERT_EQ(KOVAMGR_Release(), 20000);
    EXPECT_FALSE(FakeAdapterLibrary::IsLoaded("./OSAdapt.so"));
}

TEST_F(HostRelease, KeepsTheLogOpenForTheNextInit) {
    ASSERT_EQ(Init(), 20000);
    ASSERT_EQ(KOVAMGR_Release(), 20000);
    ASSERT_EQ(Init(), 20000);
    EXPECT_EQ(CountOf(LogText(m_Scratch), Info("Enter DetermineAddPort()")), 2);
}

TEST_F(HostRelease, KillsAReadThreadThatTheAdapterBlocks) {
    InitWith(FakeDevices().Device("Modem").Port("COM1"));
    m_Fake->Block(FakeCall::kRead, FakeBlock::kInRead);
    ASSERT_EQ(KOVAMGR_Open(1), 20000);
    ASSERT_TRUE(WaitUntil([this] { return m_Fake->Blocked() == 1; }));
    EXPECT_EQ(KOVAMGR_Release(), 20000);
    EXPECT_EQ(m_Fake->Blocked(), 0);
    EXPECT_EQ(m_Fake->OpenHandles(), 0u);
    m_Fake->Unblock();
    EXPECT_EQ(Init(), 20000);
}

TEST_F(HostRelease, LeavesAReadThreadAloneThatCannotBeKilled) {
    InitWith(FakeDevices().Device("Modem").Port("COM1").Port("COM2"));
    m_Fake->Block(FakeCall::kRead, FakeBlock::kInSpin);
    ASSERT_EQ(KOVAMGR_Open(1), 20000);
    ASSERT_TRUE(WaitUntil([this] { return m_Fake->Blocked() == 1; }));
    EXPECT_EQ(KOVAMGR_Release(), 20000);
    EXPECT_EQ(KOVAMGR_Open(1), 20003);
    EXPECT_EQ(CountOf(LogText(m_Scratch), "] ERRO:"), 1);

    EXPECT_EQ(Init(), 20000) << "a new manager beside it";
    m_Fake->Unblock();
    ASSERT_EQ(KOVAMGR_RegisterCommDataReadCallback(OnRead<1>, 2), 20000);
    ASSERT_EQ(KOVAMGR_Open(2), 20000);
    m_Fake->PushData("COM2", "hello");
    EXPECT_TRUE(WaitForTold(1));
    EXPECT_EQ(KOVAMGR_Release(), 20000);
}

TEST_F(HostRelease, EndsWholeAlsoWhenTheAdapterThrows) {
    InitWith(FakeDevices().Device("Modem").Port("COM1"));
    ASSERT_EQ(KOVAMGR_Open(1), 20000);
    m_Fake->SetHook(FakeCall::kClose, [] { throw 5; });
    m_Fake->SetHook(FakeCall::kUnRegister, [] { throw 5; });
    EXPECT_EQ(KOVAMGR_Release(), 20000);
    EXPECT_EQ(KOVAMGR_Open(1), 20003);
    m_Fake->Reset();
    EXPECT_EQ(Init(), 20000);
    EXPECT_EQ(Devices(), Lines());
}

TEST_F(HostRelease, FollowedByInitInACallbackThatLivesOnMakesNoManager) {
    InitWith(FakeDevices().Device("Modem").Port("COM1"));
    std::atomic<bool> mayGoOn{false};
    std::atomic<int> answer{0};
    m_Recorder.During("read 1", [&] {
        while (!mayGoOn) { // no cancellation point
        }
        answer = Init();
    });
    ASSERT_EQ(KOVAMGR_RegisterCommDataReadCallback(OnRead<1>, 1), 20000);
    ASSERT_EQ(KOVAMGR_Open(1), 20000);
    m_Fake->PushData("COM1", "a");
    ASSERT_TRUE(WaitForTold(1));
    EXPECT_EQ(KOVAMGR_Release(), 20000);
    mayGoOn = true;
    EXPECT_TRUE(WaitUntil([&] { return answer != 0; }));
    EXPECT_EQ(answer, 20002);
    EXPECT_EQ(KOVAMGR_Open(1), 20003);
}
