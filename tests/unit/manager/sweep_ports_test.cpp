// SPDX-License-Identifier: MIT
#include "tests/unit/manager/sweep_test.h"

using SweepPorts = SweepTest;

TEST_F(SweepPorts, DataGoToTheCallbacksOfTheirPortOnly) {
    LoadWith(FakeDevices().Device("Modem").Port("COM1").Port("COM2"));
    Register(1, OnRead<1>);
    Register(2, OnRead<2>);
    Open(1);
    Open(2);
    m_Fake->PushData("COM2", "hello");
    EXPECT_EQ(ToldBySweep(), (Lines{"read 2: hello"}));
    m_Fake->PushData("COM1", "world");
    EXPECT_EQ(ToldBySweep(), (Lines{"read 1: world"}));
    EXPECT_EQ(ToldBySweep(), Lines());
}

TEST_F(SweepPorts, PortsAreVisitedInListOrderAndCallbacksInOrderOfRegistration) {
    LoadWith(FakeDevices().Device("Modem").Port("COM1").Port("COM2"));
    Open(2);
    Open(1);
    Register(2, OnRead<2>);
    Register(2, OnRead<1>);
    Register(1, OnRead<3>);
    m_Fake->PushData("COM2", "b");
    m_Fake->PushData("COM1", "a");
    EXPECT_EQ(ToldBySweep(), (Lines{"read 3: a", "read 2: b", "read 1: b"}));
}

TEST_F(SweepPorts, OneSweepReadsEachPortOnce) {
    LoadWith(FakeDevices().Device("Modem").Port("COM1"));
    Register(1, OnRead<1>);
    Open(1);
    m_Fake->PushData("COM1", "a");
    m_Fake->PushData("COM1", "b");
    EXPECT_EQ(ToldBySweep(), (Lines{"read 1: a"}));
    EXPECT_EQ(ToldBySweep(), (Lines{"read 1: b"}));
}

TEST_F(SweepPorts, AClosedPortIsNeverReadAlsoWithCallbacks) {
    LoadWith(FakeDevices().Device("Modem").Port("COM1").Port("COM2"));
    Register(1, OnRead<1>);
    Open(2);
    Sweep();
    EXPECT_EQ(m_Fake->Calls(FakeCall::kRead), 1);
    ASSERT_EQ(m_Manager.Close(2), 20000);
    Sweep();
    EXPECT_EQ(m_Fake->Calls(FakeCall::kRead), 1);
}

TEST_F(SweepPorts, AnEmptyListIsSweptWithoutTheAdapter) {
    LoadWith(FakeDevices());
    Sweep();
    EXPECT_EQ(m_Fake->Calls(FakeCall::kRead), 0);
}

TEST_F(SweepPorts, DataOfAPortWithoutCallbacksAreDropped) {
    LoadWith(FakeDevices().Device("Modem").Port("COM1"));
    Open(1);
    m_Fake->PushData("COM1", "lost");
    Sweep();
    Register(1, OnRead<1>);
    EXPECT_EQ(ToldBySweep(), Lines());
}

TEST_F(SweepPorts, AFailingReadIsLoggedAndTheNextPortIsReadAllTheSame) {
    LoadWith(FakeDevices().Device("Modem").Port("COM1").Port("COM2"));
    Register(1, OnRead<1>);
    Register(2, OnRead<2>);
    Open(1);
    Open(2);
    NewLog();
    m_Fake->PushRead("COM1", {"lost", {}, true, OS_ADAPT_FAILED});
    m_Fake->PushData("COM2", "kept");
    EXPECT_EQ(ToldBySweep(), (Lines{"read 2: kept"}));
    EXPECT_EQ(NewLog(), Info("Read failed.\n"));
}

TEST_F(SweepPorts, EveryFailingReadOfEverySweepIsLogged) {
    LoadWith(FakeDevices().Device("Modem").Port("COM1").Port("COM2"));
    Open(1);
    Open(2);
    NewLog();
    m_Fake->SetResult(FakeCall::kRead, 0);
    Sweep();
    Sweep();
    EXPECT_EQ(CountOf(NewLog(), Info("Read failed.\n")), 4);
}

TEST_F(SweepPorts, NoDataOrANegativeCountCallsNobody) {
    LoadWith(FakeDevices().Device("Modem").Port("COM1"));
    Register(1, OnRead<1>);
    Open(1);
    m_Fake->PushRead("COM1", {"abc", 0, true, OS_ADAPT_OK});
    EXPECT_EQ(ToldBySweep(), Lines());
    m_Fake->PushRead("COM1", {"abc", -1, true, OS_ADAPT_OK});
    EXPECT_EQ(ToldBySweep(), Lines());
    m_Fake->PushRead("COM1", {"abc", 1, true, OS_ADAPT_OK});
    EXPECT_EQ(ToldBySweep(), (Lines{"read 1: a"}));
}

TEST_F(SweepPorts, WithTheRunFlagClearedNothingIsRead) {
    LoadWith(FakeDevices().Device("Modem").Port("COM1"));
    Open(1);
    ManagerProbe::ReadThreadRun(m_Manager) = 0;
    Sweep();
    EXPECT_EQ(m_Fake->Calls(FakeCall::kRead), 0);
}

TEST_F(SweepPorts, TheRunFlagEndsASweepBetweenTwoPorts) {
    LoadWith(FakeDevices().Device("Modem").Port("COM1").Port("COM2"));
    Open(1);
    Open(2);
    m_Fake->SetHook(FakeCall::kRead, [this] { ManagerProbe::ReadThreadRun(m_Manager) = 0; });
    Sweep();
    EXPECT_EQ(m_Fake->Calls(FakeCall::kRead), 1);
}

TEST_F(SweepPorts, TheRunFlagEndsTheDeliveryBetweenTwoCallbacks) {
    LoadWith(FakeDevices().Device("Modem").Port("COM1"));
    Register(1, OnRead<1>);
    Register(1, OnRead<2>);
    Register(1, OnRead<3>);
    Open(1);
    m_Recorder.During("read 2", [this] { ManagerProbe::ReadThreadRun(m_Manager) = 0; });
    m_Fake->PushData("COM1", "a");
    EXPECT_EQ(ToldBySweep(), (Lines{"read 1: a", "read 2: a"}));
}

TEST_F(SweepPorts, ANullEntryIsPassedOver) {
    LoadWith(FakeDevices().Device("Modem").Port("COM1"));
    Open(1);
    ManagerProbe::PreparedPorts(m_Manager).at(0).vecReadCallbacks = {nullptr, OnRead<1>, nullptr,
                                                                     OnRead<2>};
    m_Fake->PushData("COM1", "a");
    EXPECT_EQ(ToldBySweep(), (Lines{"read 1: a", "read 2: a"}));
}
