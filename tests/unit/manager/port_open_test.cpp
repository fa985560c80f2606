// SPDX-License-Identifier: MIT
#include "tests/unit/manager/manager_test.h"

using PortOpen = ManagerTest;

TEST_F(PortOpen, BeforeTheAdapterIsBoundFailsForThat) {
    EXPECT_EQ(m_Manager.Open(1), 20002);
    EXPECT_EQ(NewLog(), Info("Can't load OSAdapt DLL for OS_ADAPT_OpenPort."));
}

TEST_F(PortOpen, OfABoundButUninitialisedManagerFailsForThat) {
    ASSERT_TRUE(m_Manager.LoadDll());
    EXPECT_EQ(m_Manager.Open(1), 20003);
    EXPECT_EQ(NewLog(), "");
}

TEST_F(PortOpen, OfAnUnknownIdentifierIsABadArgument) {
    InitWith(FakeDevices().Device("Modem").Port("COM1"));
    EXPECT_EQ(m_Manager.Open(2), 20001);
    EXPECT_EQ(NewLog(), "");
    EXPECT_TRUE(m_Fake->Journal().empty());
}

TEST_F(PortOpen, StoresTheHandleInThePreparedPortOnly) {
    InitWith(FakeDevices().Device("Modem").Port("COM1").Port("COM2"));
    m_Fake->SetHandle("COM2", 42);

    EXPECT_EQ(m_Manager.Open(2), 20000);

    EXPECT_EQ(m_Fake->Journal(), (Lines{"Open COM2 -> 42"}));
    EXPECT_EQ(NewLog(), Info("Open COM2 succeed."));
    EXPECT_EQ(Ports().at(0).hPort, -1);
    EXPECT_EQ(Ports().at(1).hPort, 42);
    EXPECT_EQ(Tree().at(0).vecPorts.at(1).hPort, -1);
}

TEST_F(PortOpen, TwiceSucceedsLogsTwiceAndCallsTheAdapterOnce) {
    InitWith(FakeDevices().Device("Modem").Port("COM1"));
    EXPECT_EQ(m_Manager.Open(1), 20000);
    EXPECT_EQ(m_Manager.Open(1), 20000);
    EXPECT_EQ(m_Fake->Journal(), (Lines{"Open COM1 -> 1"}));
    EXPECT_EQ(NewLog(), Info("Open COM1 succeed.") + Info("Open COM1 succeed."));
}

TEST_F(PortOpen, RefusedByTheAdapterFailsAndThePortStaysClosed) {
    InitWith(FakeDevices().Device("Modem").Port("COM1"));
    m_Fake->SetResult(FakeCall::kOpen, OS_ADAPT_FAILED);
    EXPECT_EQ(m_Manager.Open(1), 20002);
    EXPECT_EQ(NewLog(), Info("Open port failed"));
    EXPECT_EQ(Ports().at(0).hPort, -1);
}

TEST_F(PortOpen, AnyResultBut30000IsAFailure) {
    InitWith(FakeDevices().Device("Modem").Port("COM1"));
    for (const int result : {0, 1, -1, 20000, 29999, 30001}) {
        m_Fake->SetResult(FakeCall::kOpen, result);
        EXPECT_EQ(m_Manager.Open(1), 20002) << result;
    }
}

TEST_F(PortOpen, ThatFailsKeepsTheHandleThatTheAdapterLeft) {
    InitWith(FakeDevices().Device("Modem").Port("COM1"));
    m_Fake->SetHandle("COM1", 9);
    m_Fake->SetResult(FakeCall::kOpen, OS_ADAPT_FAILED);

    EXPECT_EQ(m_Manager.Open(1), 20002);

    EXPECT_EQ(Ports().at(0).hPort, 9);
    EXPECT_EQ(m_Manager.Open(1), 20000) << "the handle counts as open";
    EXPECT_EQ(m_Fake->Calls(FakeCall::kOpen), 1);
}

TEST_F(PortOpen, OfASharedIdentifierOpensTheFirstPortOfIt) {
    InitWith(FakeDevices().Device("Modem").Port("COM1", 7).Port("COM2", 7));
    EXPECT_EQ(m_Manager.Open(7), 20000);
    EXPECT_EQ(m_Fake->Journal(), (Lines{"Open COM1 -> 1"}));
}

TEST_F(PortOpen, LogsTheNameAsItIs) {
    InitWith(FakeDevices().Device("Modem").Port("%s%n%%"));
    EXPECT_EQ(m_Manager.Open(1), 20000);
    EXPECT_EQ(NewLog(), Info("Open %s%n%% succeed."));
}

TEST_F(PortOpen, WorksForIdentifierZero) {
    InitWith(FakeDevices());
    ManagerProbe::LastPortID(m_Manager) = -1;
    FakeDevices().Device("Modem").Port("COM1").Apply(*m_Fake);
    m_Manager.DetermineAddPort();
    ASSERT_EQ(PortLines(), (Lines{"COM1 = 0"}));
    EXPECT_EQ(m_Manager.Open(0), 20000);
    EXPECT_EQ(m_Manager.Close(0), 20000);
    EXPECT_EQ(m_Fake->OpenHandles(), 0u);
}
