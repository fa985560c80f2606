// SPDX-License-Identifier: MIT
//
// Devices that vanish with all their ports.
#include "tests/harness/capture_stdout.h"
#include "tests/unit/manager/manager_test.h"

namespace {

std::string Deleted(const std::string& port) {
    return "Delete " + port + " port in m_stDeviceTree.\n";
}

class DeviceRemoval : public ManagerTest {
  protected:
    // Only this is left; returns what the rescan prints.
    std::string Leave(const FakeDevices& devices) {
        devices.Apply(*m_Fake);
        m_Fake->ClearJournal();
        NewLog();
        CaptureStdout output;
        m_Manager.DetermineSubtractPort();
        return output.Text();
    }
    void Open(int port) { ASSERT_EQ(m_Manager.Open(port), 20000); }
};

} // namespace

TEST_F(DeviceRemoval, AnEnumerationOfNothingRemovesAllAndClosesWhatIsOpen) {
    LoadWith(FakeDevices().Device("Modem").Port("COM1").Port("COM2").Device("Reader").Port("COM3"));
    Open(3);
    Open(2);
    EXPECT_EQ(Leave(FakeDevices()), Deleted("COM1") + Deleted("COM2") + Deleted("COM3"));
    EXPECT_TRUE(Ports().empty());
    EXPECT_TRUE(Tree().empty());
    EXPECT_EQ(m_Fake->Journal(), (Lines{"Enum 4", "Close 2", "Close 1"}));
    EXPECT_EQ(NewLog(), Info("Enter DetermineSubtractPort()") +
                            Info("DetermineSubtractPort() Enum Device Count=0 !") +
                            Info("Close port:2 succeeded.") + Info("Close port:3 succeeded.") +
                            Info("Leave DetermineSubtractPort()"));
}

TEST_F(DeviceRemoval, OnlyTheVanishedDeviceGoes) {
    LoadWith(FakeDevices().Device("A").Port("A1").Device("B").Port("B1").Device("C").Port("C1"));
    Open(1);
    Open(2);
    Open(3);
    EXPECT_EQ(Leave(FakeDevices().Device("C").Port("C1").Device("A").Port("A1")), Deleted("B1"));
    EXPECT_EQ(PortLines(), (Lines{"A1 = 1", "C1 = 3"}));
    EXPECT_EQ(TreeLines(), (Lines{"A: A1", "C: C1"}));
    EXPECT_EQ(m_Fake->Journal(), (Lines{"Enum 4", "Close 2"}));
}

TEST_F(DeviceRemoval, TheRestKeepsItsHandlesAndItsCallbacks) {
    LoadWith(FakeDevices().Device("A").Port("A1").Device("B").Port("B1").Device("C").Port("C1"));
    m_Fake->SetHandle("C1", 33);
    Open(3);
    ASSERT_EQ(m_Manager.RegisterReadCallBack(3, OnRead<1>), 20000);
    Leave(FakeDevices().Device("A").Port("A1").Device("C").Port("C1"));
    EXPECT_EQ(Ports().at(1).hPort, 33);
    EXPECT_EQ(Ports().at(1).vecReadCallbacks, (std::vector<KOVAMGR_READ_CALLBACK>{OnRead<1>}));
    EXPECT_EQ(Ports().at(0).hPort, -1);
}

TEST_F(DeviceRemoval, DeviceNamesDifferInTheirCase) {
    LoadWith(FakeDevices().Device("Modem").Port("COM1"));
    EXPECT_EQ(Leave(FakeDevices().Device("modem").Port("COM1")), Deleted("COM1"));
    EXPECT_TRUE(Ports().empty());
}

TEST_F(DeviceRemoval, AFailingCloseRemovesThePortAllTheSame) {
    LoadWith(FakeDevices().Device("Modem").Port("COM1"));
    Open(1);
    m_Fake->SetResult(FakeCall::kClose, OS_ADAPT_FAILED);
    Leave(FakeDevices());
    EXPECT_TRUE(Ports().empty());
    EXPECT_EQ(m_Fake->Journal(), (Lines{"Enum 4", "Close 1 = 30001"}));
    EXPECT_EQ(CountOf(NewLog(), Info("Close port failed.")), 1);
}

TEST_F(DeviceRemoval, FromAnEmptyTreeLogsItsCountAndItsEnd) {
    LoadWith(FakeDevices());
    EXPECT_EQ(Leave(FakeDevices().Device("Modem").Port("COM1")), "");
    EXPECT_EQ(NewLog(), Info("Enter DetermineSubtractPort()") +
                            Info("DetermineSubtractPort() Enum Device Count=1 !") +
                            Info("Leave DetermineSubtractPort()"));
    EXPECT_TRUE(Ports().empty()) << "a removal adds nothing";
}

TEST_F(DeviceRemoval, AFailedEnumerationRemovesNothing) {
    LoadWith(FakeDevices().Device("Modem").Port("COM1"));
    for (const int result : {0, 20000, 30001}) {
        m_Fake->SetResult(FakeCall::kEnum, result);
        EXPECT_EQ(Leave(FakeDevices()), "");
        EXPECT_EQ(NewLog(), Info("Enter DetermineSubtractPort()") +
                                Info("Enumerate information of ports failed."));
    }
    EXPECT_EQ(PortLines(), (Lines{"COM1 = 1"}));
}

TEST_F(DeviceRemoval, ANegativeCountIsReportedAndMeansNone) {
    LoadWith(FakeDevices().Device("Modem").Port("COM1"));
    Leave(FakeDevices().Device("Modem").Port("COM1").DeviceCount(-3));
    EXPECT_TRUE(Ports().empty());
    EXPECT_EQ(CountOf(NewLog(), Info("DetermineSubtractPort() Enum Device Count=-3 !")), 1);
}

TEST_F(DeviceRemoval, ACountAbove64IsReportedAndReadsNoFurtherThanTheArray) {
    LoadWith(FakeDevices::Many(64, 1));
    EXPECT_EQ(Leave(FakeDevices::Many(64, 1).DeviceCount(2147483647)), "");
    EXPECT_EQ(Ports().size(), 64u);
    EXPECT_EQ(CountOf(NewLog(), Info("DetermineSubtractPort() Enum Device Count=2147483647 !")), 1);
}

TEST_F(DeviceRemoval, ByNameRemovesThePortsOfThatNameOnly) {
    LoadWith(FakeDevices().Device("A").Port("A1").Device("B").Port("B1").Port("B2"));
    Open(3);
    m_Fake->ClearJournal();
    CaptureStdout output;
    m_Manager.ReleaseDevicePorts("B");
    EXPECT_EQ(output.Text(), Deleted("B1") + Deleted("B2"));
    EXPECT_EQ(PortLines(), (Lines{"A1 = 1"}));
    EXPECT_EQ(TreeLines(), (Lines{"A: A1"}));
    EXPECT_EQ(m_Fake->Journal(), (Lines{"Close 1"}));
}

TEST_F(DeviceRemoval, ByANameThatNoPortCarriesOrByNullChangesNothing) {
    LoadWith(FakeDevices().Device("A").Port("A1"));
    CaptureStdout output;
    m_Manager.ReleaseDevicePorts("a");
    m_Manager.ReleaseDevicePorts("");
    m_Manager.ReleaseDevicePorts(nullptr);
    EXPECT_EQ(output.Text(), "");
    EXPECT_EQ(PortLines(), (Lines{"A1 = 1"}));
    EXPECT_EQ(TreeLines(), (Lines{"A: A1"}));
    EXPECT_EQ(NewLog(), "");
}

TEST_F(DeviceRemoval, OfASharedIdentifierClosesTheFirstPortOfIt) {
    // The vanished device's port is open, and so is the one that it shares its number with.
    LoadWith(FakeDevices().Device("A").Port("A1", 7).Device("B").Port("B1", 7));
    ManagerProbe::PreparedPorts(m_Manager).at(0).hPort = 10;
    ManagerProbe::PreparedPorts(m_Manager).at(1).hPort = 20;
    Leave(FakeDevices().Device("A").Port("A1", 7));
    EXPECT_TRUE(Ports().empty()) << "the first of that number went, then the next";
    EXPECT_EQ(m_Fake->Journal(), (Lines{"Enum 4", "Close 10", "Close 20"}));
}
