// SPDX-License-Identifier: MIT
//
// Ports that vanish from a device that stays.
#include "tests/harness/capture_stdout.h"
#include "tests/unit/manager/manager_test.h"

namespace {

std::string Deleted(const std::string& port) {
    return "Delete " + port + " port in m_stDeviceTree.\n";
}

class PortRemoval : public ManagerTest {
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

TEST_F(PortRemoval, OneOfTwoGoesWithoutBeingClosed) {
    LoadWith(FakeDevices().Device("Modem").Port("COM1").Port("COM2"));
    Open(1);
    Open(2);
    EXPECT_EQ(Leave(FakeDevices().Device("Modem").Port("COM1")), Deleted("COM2"));
    EXPECT_EQ(PortLines(), (Lines{"COM1 = 1"}));
    EXPECT_EQ(TreeLines(), (Lines{"Modem: COM1"}));
    EXPECT_EQ(m_Fake->Journal(), (Lines{"Enum 4"}));
    EXPECT_EQ(m_Fake->OpenHandles(), 2u);
    EXPECT_EQ(NewLog(), Info("Enter DetermineSubtractPort()") +
                            Info("DetermineSubtractPort() Enum Device Count=1 !") +
                            Info("Leave DetermineSubtractPort()"));
}

TEST_F(PortRemoval, AnOpenHandleInTheTreesCopyIsClosed) {
    // Never so by itself: the copy is changed here, to show which of the two is asked.
    LoadWith(FakeDevices().Device("Modem").Port("COM1").Port("COM2"));
    Open(2);
    ManagerProbe::DeviceTree(m_Manager).at(0).vecPorts.at(1).hPort = 5;
    Leave(FakeDevices().Device("Modem").Port("COM1"));
    EXPECT_EQ(m_Fake->Journal(), (Lines{"Enum 4", "Close 1"}));
}

TEST_F(PortRemoval, TheFirstOfThreeAndThenTheMiddleOneGo) {
    LoadWith(FakeDevices().Device("Modem").Port("COM1").Port("COM2").Port("COM3"));
    EXPECT_EQ(Leave(FakeDevices().Device("Modem").Port("COM3").Port("COM2")), Deleted("COM1"));
    EXPECT_EQ(TreeLines(), (Lines{"Modem: COM2 COM3"}));
    EXPECT_EQ(Leave(FakeDevices().Device("Modem").Port("COM3")), Deleted("COM2"));
    EXPECT_EQ(TreeLines(), (Lines{"Modem: COM3"}));
    EXPECT_EQ(PortLines(), (Lines{"COM3 = 3"}));
}

TEST_F(PortRemoval, AnUnchangedNumberOfPortsIsTakenAsNoChange) {
    LoadWith(FakeDevices().Device("Modem").Port("COM1").Port("COM2"));
    EXPECT_EQ(Leave(FakeDevices().Device("Modem").Port("COM8").Port("COM9")), "");
    EXPECT_EQ(PortLines(), (Lines{"COM1 = 1", "COM2 = 2"}));
}

TEST_F(PortRemoval, AGrownDeviceLosesWhatItDoesNotReport) {
    LoadWith(FakeDevices().Device("Modem").Port("COM1").Port("COM2"));
    EXPECT_EQ(Leave(FakeDevices().Device("Modem").Port("COM2").Port("COM3").Port("COM4")),
              Deleted("COM1"));
    EXPECT_EQ(PortLines(), (Lines{"COM2 = 2"}));
}

TEST_F(PortRemoval, TheLastPortTakesItsDeviceAlong) {
    LoadWith(FakeDevices().Device("Modem").Port("COM1"));
    Open(1);
    EXPECT_EQ(Leave(FakeDevices().Device("Modem")), Deleted("COM1"));
    EXPECT_TRUE(Ports().empty());
    EXPECT_TRUE(Tree().empty());
    EXPECT_EQ(m_Fake->Journal(), (Lines{"Enum 4"})) << "not closed";
}

TEST_F(PortRemoval, TheDeviceThatMovesUpIsComparedWithTheEntryOfTheRemovedOne) {
    LoadWith(FakeDevices().Device("A").Port("A1").Device("B").Port("B1").Device("C").Port("C1"));
    Open(2);
    // "B" is whole, but is walked against the entry of "A" once "A" is gone; so is "C" after it.
    EXPECT_EQ(Leave(FakeDevices().Device("A").Device("B").Port("B1").Device("C").Port("C1")),
              Deleted("A1") + Deleted("B1") + Deleted("C1"));
    EXPECT_TRUE(Tree().empty());
    EXPECT_EQ(m_Fake->Journal(), (Lines{"Enum 4"}));
}

TEST_F(PortRemoval, TheScanGoesOnBehindTheDeviceThatMovedUp) {
    // The entry of "A" names the port of "B": "B" stays and "C" is looked at with its own entry.
    LoadWith(FakeDevices().Device("A").Port("A1").Device("B").Port("B1").Device("C").Port("C1"));
    EXPECT_EQ(
        Leave(
            FakeDevices().Device("A").Port("B1").Port("X").Device("B").Port("B1").Device("C").Port(
                "C1")),
        Deleted("A1"));
    EXPECT_EQ(TreeLines(), (Lines{"B: B1", "C: C1"}));
}

TEST_F(PortRemoval, APortCountAbove16IsComparedAsItIs) {
    LoadWith(FakeDevices::Many(1, 16));
    EXPECT_EQ(Leave(FakeDevices::Many(1, 16).PortCount(17)), "") << "all 16 are found";
    EXPECT_EQ(Ports().size(), 16u);
    EXPECT_EQ(Leave(FakeDevices::Many(1, 15).PortCount(2147483647)), Deleted("COM16"));
    EXPECT_EQ(Ports().size(), 15u);
}

TEST_F(PortRemoval, ANegativePortCountMeansNone) {
    LoadWith(FakeDevices().Device("Modem").Port("COM1").Port("COM2"));
    EXPECT_EQ(Leave(FakeDevices().Device("Modem").Port("COM1").Port("COM2").PortCount(-1)),
              Deleted("COM1") + Deleted("COM2"));
    EXPECT_TRUE(Tree().empty());
}

TEST_F(PortRemoval, ByIdentifierRemovesFromBothListsWithoutClosing) {
    LoadWith(FakeDevices().Device("Modem").Port("COM1").Port("COM2"));
    Open(2);
    NewLog();
    m_Fake->ClearJournal();
    CaptureStdout output;
    m_Manager.DeletePreparedPortAt(2);
    EXPECT_EQ(output.Text(), Deleted("COM2"));
    EXPECT_EQ(PortLines(), (Lines{"COM1 = 1"}));
    EXPECT_EQ(TreeLines(), (Lines{"Modem: COM1"}));
    EXPECT_TRUE(m_Fake->Journal().empty());
    EXPECT_EQ(NewLog(), "");
}

TEST_F(PortRemoval, ByAnUnknownIdentifierStillDropsDevicesWithoutPorts) {
    LoadWith(FakeDevices().Device("A").Port("A1").Device("B").Port("B1").Device("C").Port("C1"));
    ManagerProbe::DeviceTree(m_Manager).at(0).vecPorts.clear();
    ManagerProbe::DeviceTree(m_Manager).at(2).vecPorts.clear();
    CaptureStdout output;
    m_Manager.DeletePreparedPortAt(99);
    EXPECT_EQ(output.Text(), "");
    EXPECT_EQ(TreeLines(), (Lines{"B: B1"}));
    EXPECT_EQ(Ports().size(), 3u);
}

TEST_F(PortRemoval, ByASharedIdentifierRemovesOnePreparedPortAndOneOfEachDevice) {
    LoadWith(
        FakeDevices().Device("A").Port("A1", 7).Port("A2").Device("B").Port("B1", 7).Port("B2"));
    CaptureStdout output;
    m_Manager.DeletePreparedPortAt(7);
    EXPECT_EQ(output.Text(), Deleted("A1") + Deleted("B1"));
    EXPECT_EQ(PortLines(), (Lines{"A2 = 1", "B1 = 7", "B2 = 2"}));
    EXPECT_EQ(TreeLines(), (Lines{"A: A2", "B: B2"}));
}
