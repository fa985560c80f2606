// SPDX-License-Identifier: MIT
#include "tests/unit/manager/manager_test.h"

using PortClose = ManagerTest;

TEST_F(PortClose, OfAnUninitialisedManagerFailsForThatAlsoWithoutAnAdapter) {
    EXPECT_EQ(m_Manager.Close(1), 20003);
    ASSERT_TRUE(m_Manager.LoadDll());
    EXPECT_EQ(m_Manager.Close(1), 20003);
    EXPECT_EQ(NewLog(), "");
}

TEST_F(PortClose, OfAnUnknownIdentifierSucceeds) {
    InitWith(FakeDevices().Device("Modem").Port("COM1"));
    EXPECT_EQ(m_Manager.Close(2), 20000);
    EXPECT_EQ(NewLog(), "");
    EXPECT_TRUE(m_Fake->Journal().empty());
}

TEST_F(PortClose, OfAClosedPortSucceedsWithoutTheAdapter) {
    InitWith(FakeDevices().Device("Modem").Port("COM1"));
    EXPECT_EQ(m_Manager.Close(1), 20000);
    EXPECT_EQ(NewLog(), "");
    EXPECT_TRUE(m_Fake->Journal().empty());
}

TEST_F(PortClose, GivesTheHandleBack) {
    InitWith(FakeDevices().Device("Modem").Port("COM1"));
    m_Fake->SetHandle("COM1", 42);
    ASSERT_EQ(m_Manager.Open(1), 20000);
    NewLog();

    EXPECT_EQ(m_Manager.Close(1), 20000);

    EXPECT_EQ(m_Fake->Journal(), (Lines{"Open COM1 -> 42", "Close 42"}));
    EXPECT_EQ(NewLog(), Info("Close port:1 succeeded."));
    EXPECT_EQ(Ports().at(0).hPort, -1);
}

TEST_F(PortClose, KeepsTheReadCallbacks) {
    InitWith(FakeDevices().Device("Modem").Port("COM1"));
    ASSERT_EQ(m_Manager.RegisterReadCallBack(1, OnRead<1>), 20000);
    ASSERT_EQ(m_Manager.Open(1), 20000);
    ASSERT_EQ(m_Manager.Close(1), 20000);
    EXPECT_EQ(Ports().at(0).vecReadCallbacks, (std::vector<KOVAMGR_READ_CALLBACK>{OnRead<1>}));
}

TEST_F(PortClose, RefusedByTheAdapterLeavesThePortOpen) {
    InitWith(FakeDevices().Device("Modem").Port("COM1"));
    ASSERT_EQ(m_Manager.Open(1), 20000);
    NewLog();
    m_Fake->SetResult(FakeCall::kClose, OS_ADAPT_FAILED);

    EXPECT_EQ(m_Manager.Close(1), 20002);

    EXPECT_EQ(NewLog(), Info("Close port failed."));
    EXPECT_EQ(Ports().at(0).hPort, 1);
}

TEST_F(PortClose, RefusedByTheAdapterLetsWritesReachTheOldHandle) {
    InitWith(FakeDevices().Device("Modem").Port("COM1"));
    m_Fake->SetHandle("COM1", 42);
    ASSERT_EQ(m_Manager.Open(1), 20000);
    m_Fake->SetResult(FakeCall::kClose, OS_ADAPT_FAILED);
    ASSERT_EQ(m_Manager.Close(1), 20002);
    m_Fake->ClearJournal();

    long result = 5;
    EXPECT_EQ(m_Manager.Write(1, "abc", 3, 0, KOVAMGR_COMMAND_PRIORITY_NORMAL, &result), 3);
    EXPECT_EQ(m_Fake->Journal(), (Lines{"Write 42 3"}));
}

TEST_F(PortClose, AnyResultBut30000IsAFailure) {
    InitWith(FakeDevices().Device("Modem").Port("COM1"));
    ASSERT_EQ(m_Manager.Open(1), 20000);
    for (const int result : {0, 1, -1, 20000, 29999, 30001}) {
        m_Fake->SetResult(FakeCall::kClose, result);
        EXPECT_EQ(m_Manager.Close(1), 20002) << result;
    }
}

TEST_F(PortClose, IsFollowedByAFreshOpen) {
    InitWith(FakeDevices().Device("Modem").Port("COM1"));
    ASSERT_EQ(m_Manager.Open(1), 20000);
    ASSERT_EQ(m_Manager.Close(1), 20000);
    ASSERT_EQ(m_Manager.Open(1), 20000);
    EXPECT_EQ(m_Fake->Journal(), (Lines{"Open COM1 -> 1", "Close 1", "Open COM1 -> 2"}));
}
