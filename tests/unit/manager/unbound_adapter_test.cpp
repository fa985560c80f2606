// SPDX-License-Identifier: MIT
//
// Every operation asks for all seven functions of the adapter, whichever it uses itself.
#include "tests/unit/manager/manager_test.h"
#include "tests/unit/manager/unresolved.h"

namespace {

class WithoutOneFunction : public ManagerTest, public testing::WithParamInterface<Operation> {
  protected:
    // A manager with an open port that loses one function.
    void SetUp() override {
        LoadWith(FakeDevices().Device("Modem").Port("COM1"));
        ASSERT_EQ(m_Manager.Open(1), 20000);
        NewLog();
        m_Fake->ClearJournal();
        m_nReads = m_Fake->Calls(FakeCall::kRead);
        GetParam().clear();
    }

    void ExpectNoCalls() {
        EXPECT_TRUE(m_Fake->Journal().empty());
        EXPECT_EQ(m_Fake->Calls(FakeCall::kRead), m_nReads);
    }

    long m_nReads = 0;
    long m_nResult = 5;
};

} // namespace

INSTANTIATE_TEST_SUITE_P(EachOfTheSeven, WithoutOneFunction, testing::ValuesIn(Operations()),
                         OperationName);

TEST_P(WithoutOneFunction, OpenFails) {
    EXPECT_EQ(m_Manager.Open(1), 20002);
    EXPECT_EQ(m_Manager.Open(99), 20002);
    EXPECT_EQ(NewLog(), Info("Can't load OSAdapt DLL for OS_ADAPT_OpenPort.") +
                            Info("Can't load OSAdapt DLL for OS_ADAPT_OpenPort."));
    ExpectNoCalls();
}

TEST_P(WithoutOneFunction, OpenFailsForThatAlsoWhenNotInitialised) {
    ManagerProbe::IsInit(m_Manager) = 0;
    EXPECT_EQ(m_Manager.Open(1), 20002);
}

TEST_P(WithoutOneFunction, CloseFailsAndThePortStaysOpen) {
    EXPECT_EQ(m_Manager.Close(1), 20002);
    EXPECT_EQ(NewLog(), Info("Can't load OSAdapt DLL for OS_ADAPT_ClosePort."));
    EXPECT_EQ(Ports().at(0).hPort, 1);
    EXPECT_EQ(m_Manager.Close(99), 20002);
    ManagerProbe::IsInit(m_Manager) = 0;
    EXPECT_EQ(m_Manager.Close(1), 20003);
    ExpectNoCalls();
}

TEST_P(WithoutOneFunction, WriteFails) {
    EXPECT_EQ(m_Manager.Write(1, "abc", 3, 0, KOVAMGR_COMMAND_PRIORITY_NORMAL, &m_nResult), -1);
    EXPECT_EQ(m_nResult, 20002);
    EXPECT_EQ(NewLog(), Info("Can't load OSAdapt DLL for OS_ADAPT_Write."));
    ManagerProbe::IsInit(m_Manager) = 0;
    EXPECT_EQ(m_Manager.Write(1, "abc", 3, 0, KOVAMGR_COMMAND_PRIORITY_NORMAL, &m_nResult), -1);
    EXPECT_EQ(m_nResult, 20003);
    ExpectNoCalls();
}

TEST_P(WithoutOneFunction, ReadFails) {
    char buffer[8];
    EXPECT_EQ(m_Manager.Read(reinterpret_cast<void*>(1), buffer, sizeof(buffer), &m_nResult), -1);
    EXPECT_EQ(m_nResult, 20002);
    EXPECT_EQ(NewLog(), Info("Can't load OSAdapt DLL for OS_ADAPT_Read."));
    ExpectNoCalls();
}

TEST_P(WithoutOneFunction, ASweepReadsNothingAndLogsOncePerOpenPort) {
    ManagerProbe::PreparedPorts(m_Manager).push_back(Ports().at(0));
    ManagerProbe::PreparedPorts(m_Manager).push_back(_PORT_());
    char buffer[4097];
    long length = 0;
    ManagerProbe::SweepPorts(m_Manager, buffer, length);
    EXPECT_EQ(NewLog(), Info("Can't load OSAdapt DLL for OS_ADAPT_Read.") +
                            Info("Can't load OSAdapt DLL for OS_ADAPT_Read."));
    ExpectNoCalls();
    ManagerProbe::PreparedPorts(m_Manager).resize(1);
}

TEST_P(WithoutOneFunction, AnInsertionAddsNothing) {
    FakeDevices().Device("Modem").Port("COM1").Port("COM2").Apply(*m_Fake);
    m_Manager.DetermineAddPort();
    EXPECT_EQ(NewLog(), Info("Enter DetermineAddPort()") +
                            Info("Getting interface of OS_ADAPT_EnumDevicePortInfo failed."));
    EXPECT_EQ(PortLines(), (Lines{"COM1 = 1"}));
    ExpectNoCalls();
}

TEST_P(WithoutOneFunction, APullOutRemovesNothing) {
    FakeDevices().Apply(*m_Fake);
    m_Manager.DetermineSubtractPort();
    EXPECT_EQ(NewLog(), Info("Enter DetermineSubtractPort()") +
                            Info("Getting interface of OS_ADAPT_EnumDevicePortInfo failed."));
    EXPECT_EQ(PortLines(), (Lines{"COM1 = 1"}));
    ExpectNoCalls();
}

TEST_P(WithoutOneFunction, ReleaseNeitherClosesNorUnregisters) {
    EXPECT_EQ(m_Manager.Release(), 20000);
    EXPECT_EQ(NewLog(), Info("ENTER CKOVASMgrPort::Release()") +
                            Info("Can't load OSAdapt DLL for OS_ADAPT_ClosePort.") +
                            Info("Getting interface of OSADapt.dll failed.") +
                            Info("LEAVE CKOVASMgrPort::Release()"));
    EXPECT_TRUE(Ports().empty());
    ExpectNoCalls();
}
