// SPDX-License-Identifier: MIT
#include "tests/unit/manager/manager_test.h"

namespace {

class Arrival : public ManagerTest {
  protected:
    // What is attached now, found by a rescan.
    void Attach(const FakeDevices& devices) {
        devices.Apply(*m_Fake);
        m_Manager.DetermineAddPort();
    }
};

} // namespace

TEST_F(Arrival, PortsAreAddedDeviceByDeviceAndPortByPort) {
    LoadWith(FakeDevices().Device("Modem").Port("COM3").Port("COM1").Device("Reader").Port("COM2"));
    EXPECT_EQ(PortLines(), (Lines{"COM3 = 1", "COM1 = 2", "COM2 = 3"}));
    EXPECT_EQ(TreeLines(), (Lines{"Modem: COM3 COM1", "Reader: COM2"}));
}

TEST_F(Arrival, BothCopiesOfAPortAreFilledAlike) {
    LoadWith(FakeDevices().Device("Modem", "a text").Port("COM1", 9));
    for (const _PORT_& port : {Ports().at(0), Tree().at(0).vecPorts.at(0)}) {
        EXPECT_EQ(port.nPortID, 9);
        EXPECT_EQ(port.nPortType, 20100);
        EXPECT_EQ(port.strPortName, "COM1");
        EXPECT_EQ(port.strDeviceName, "Modem");
        EXPECT_EQ(port.hPort, -1);
        EXPECT_TRUE(port.vecReadCallbacks.empty());
        EXPECT_EQ(port.strDeviceText, "a text");
    }
    EXPECT_STREQ(Tree().at(0).szDeviceText, "a text");
}

TEST_F(Arrival, TheAdapterIsAskedOnceWithAFourAndAZeroedList) {
    ASSERT_TRUE(m_Manager.LoadDll());
    static bool s_bIsZero = false;
    static int s_nWhich = 0;
    pfnEnumPortInfo = [](int which, _OS_ADAPT_DEVICEPORTLIST* list) {
        const char* const bytes = reinterpret_cast<const char*>(list);
        s_bIsZero = std::string(bytes, sizeof(*list)) == std::string(sizeof(*list), '\0');
        s_nWhich = which;
        return OS_ADAPT_OK;
    };
    m_Manager.DetermineAddPort();
    EXPECT_TRUE(s_bIsZero);
    EXPECT_EQ(s_nWhich, 4);
    s_bIsZero = false;
    m_Manager.DetermineSubtractPort();
    EXPECT_TRUE(s_bIsZero);
    EXPECT_EQ(s_nWhich, 4);
}

TEST_F(Arrival, OfAKnownPortChangesNothingWhateverElseIsNew) {
    LoadWith(FakeDevices().Device("Modem", "old").Port("COM1"));
    ASSERT_EQ(m_Manager.Open(1), 20000);
    ASSERT_EQ(m_Manager.RegisterReadCallBack(1, OnRead<1>), 20000);
    Attach(FakeDevices().Device("Reader", "new").Port("COM1", 5));
    EXPECT_EQ(PortLines(), (Lines{"COM1 = 1"}));
    EXPECT_EQ(TreeLines(), (Lines{"Modem: COM1"}));
    EXPECT_EQ(Ports().at(0).hPort, 1);
    EXPECT_EQ(Ports().at(0).vecReadCallbacks.size(), 1u);
    EXPECT_STREQ(Tree().at(0).szDeviceText, "old");
}

TEST_F(Arrival, PortNamesDifferInTheirCase) {
    LoadWith(FakeDevices().Device("Modem").Port("COM1").Port("com1").Port("COM"));
    EXPECT_EQ(PortLines(), (Lines{"COM1 = 1", "com1 = 2", "COM = 3"}));
}

TEST_F(Arrival, ANameThatIsReportedTwiceAtOnceIsAddedOnce) {
    LoadWith(FakeDevices().Device("Modem").Port("COM1").Port("COM1").Device("Reader").Port("COM1"));
    EXPECT_EQ(PortLines(), (Lines{"COM1 = 1"}));
    EXPECT_EQ(TreeLines(), (Lines{"Modem: COM1"}));
}

TEST_F(Arrival, OfALaterPortAppendsItToItsDevice) {
    LoadWith(FakeDevices().Device("Modem").Port("COM1").Device("Reader").Port("COM2"));
    Attach(FakeDevices().Device("Reader").Port("COM2").Device("Modem").Port("COM3").Port("COM1"));
    EXPECT_EQ(PortLines(), (Lines{"COM1 = 1", "COM2 = 2", "COM3 = 3"}));
    EXPECT_EQ(TreeLines(), (Lines{"Modem: COM1 COM3", "Reader: COM2"}));
}

TEST_F(Arrival, NeverRemovesWhatIsNotReportedAnyMore) {
    LoadWith(FakeDevices().Device("Modem").Port("COM1"));
    Attach(FakeDevices());
    EXPECT_EQ(PortLines(), (Lines{"COM1 = 1"}));
    EXPECT_EQ(TreeLines(), (Lines{"Modem: COM1"}));
}

TEST_F(Arrival, ADeviceWithoutPortsMakesNoRecord) {
    LoadWith(FakeDevices().Device("Empty").Device("Modem").Port("COM1"));
    EXPECT_EQ(TreeLines(), (Lines{"Modem: COM1"}));
}

TEST_F(Arrival, TwoDevicesOfOneNameAreMerged) {
    LoadWith(FakeDevices().Device("Modem").Port("COM1").Device("Modem").Port("COM2"));
    EXPECT_EQ(PortLines(), (Lines{"COM1 = 1", "COM2 = 2"}));
    EXPECT_EQ(TreeLines(), (Lines{"Modem: COM1 COM2"}));
}

TEST_F(Arrival, AProposedIdentifierIsTakenAlsoWhenAnotherPortHasIt) {
    LoadWith(FakeDevices().Device("Modem").Port("COM1", 7).Port("COM2", 7).Port("COM3", -3));
    EXPECT_EQ(PortLines(), (Lines{"COM1 = 7", "COM2 = 7", "COM3 = -3"}));
    EXPECT_EQ(ManagerProbe::LastPortID(m_Manager), 0);
}

TEST_F(Arrival, ANewNumberSkipsIdentifiersInAscendingOrder) {
    LoadWith(FakeDevices().Device("Modem").Port("COM1", 1).Port("COM2", 2).Port("COM3"));
    EXPECT_EQ(PortLines(), (Lines{"COM1 = 1", "COM2 = 2", "COM3 = 3"}));
    EXPECT_EQ(ManagerProbe::LastPortID(m_Manager), 3);
}

TEST_F(Arrival, ANewNumberRepeatsOneThatStandsOutOfOrder) {
    LoadWith(FakeDevices().Device("Modem").Port("COM1", 2).Port("COM2", 1).Port("COM3"));
    EXPECT_EQ(PortLines(), (Lines{"COM1 = 2", "COM2 = 1", "COM3 = 2"}));
}

TEST_F(Arrival, APortThatComesBackHasANewNumber) {
    LoadWith(FakeDevices().Device("Modem").Port("COM1"));
    FakeDevices().Apply(*m_Fake);
    m_Manager.DetermineSubtractPort();
    Attach(FakeDevices().Device("Modem").Port("COM1"));
    EXPECT_EQ(PortLines(), (Lines{"COM1 = 2"}));
}
