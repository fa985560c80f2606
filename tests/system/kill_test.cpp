// SPDX-License-Identifier: MIT
#include "tests/system/attached_host.h"
#include "tests/system/stuck_callbacks.h"

namespace {

class Kill : public AttachedHost {
  protected:
    // Releases while the read thread is stuck for ever in a place that cancellation reaches.
    void CheckRelease() {
        const auto seconds = SecondsOfRelease();
        ASSERT_TRUE(seconds.has_value()) << "the release hangs";
        EXPECT_GE(*seconds, 4.0);
        EXPECT_LE(*seconds, 7.0);
        EXPECT_TRUE(WaitUntilThreadsAre(m_Threads)) << "the read thread lives on";
        EXPECT_EQ(1, JournalLines("Close 1"));
        EXPECT_EQ(1, JournalLines("Close 2"));
        EXPECT_EQ(0U, m_Fake->OpenHandles());
        EXPECT_EQ(1, JournalLines("UnRegister"));
        EXPECT_EQ(0, LogLines("ERRO:"));
        EXPECT_EQ(1, LogLines("LEAVE CKOVASMgrPort::Release()"));
    }

    void StickIn(KOVAMGR_READ_CALLBACK callback) {
        InitAndOpen();
        ASSERT_EQ(KOVAMGR_OK, KOVAMGR_RegisterCommDataReadCallback(callback, 2));
        m_Fake->PushData("COM2", "data");
        ASSERT_TRUE(WaitUntilStuck());
    }
};

} // namespace

TEST_F(Kill, AReadThatBlocksForEverInTheAdapterIsKilledAndEveryPortClosedOnce) {
    InitAndOpen();
    m_Fake->Block(FakeCall::kRead, FakeBlock::kInRead);
    ASSERT_TRUE(WaitUntil([&] { return m_Fake->Blocked() == 1; }));
    CheckRelease();
    EXPECT_EQ(0, m_Fake->Blocked());
    CheckThatANewManagerWorks();
}

TEST_F(Kill, ACallbackThatBlocksForEverInReadIsKilledAndEveryPortClosedOnce) {
    StickIn(BlockInRead);
    CheckRelease();
    CheckThatANewManagerWorks();
}

TEST_F(Kill, ACallbackThatWaitsForEverForAConditionIsKilledAndEveryPortClosedOnce) {
    StickIn(BlockOnCondition);
    CheckRelease();
    CheckThatANewManagerWorks();
}
