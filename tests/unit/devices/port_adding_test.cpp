// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>

#include "devices/port_book.h"
#include "tests/unit/devices/port_builders.h"

namespace {

class PortAdding : public testing::Test {
  protected:
    std::vector<_PORT_> m_Ports;
    std::vector<_COMM_MGR_DEVICE_INFO_> m_Devices;
};

std::string Whole(const char (&text)[KOVAMGR_DEVICE_TEXT_SIZE]) {
    return std::string(text, sizeof(text));
}

std::string Padded(std::string text) {
    text.resize(KOVAMGR_DEVICE_TEXT_SIZE);
    return text;
}

} // namespace

TEST_F(PortAdding, TheFirstPortMakesItsDevice) {
    AddPort(Port(1, "COM1", "reader", "second floor"), m_Ports, m_Devices);

    EXPECT_EQ(Names(m_Ports), (std::vector<std::string>{"COM1"}));
    ASSERT_EQ(m_Devices.size(), 1u);
    EXPECT_EQ(Whole(m_Devices[0].szDeviceName), Padded("reader"));
    EXPECT_EQ(Whole(m_Devices[0].szDeviceText), Padded("second floor"));
    EXPECT_EQ(Names(m_Devices[0].vecPorts), (std::vector<std::string>{"COM1"}));
}

TEST_F(PortAdding, TwoPortsOfOneDeviceShareItInTheOrderOfTheirDiscovery) {
    AddPort(Port(1, "COM2", "reader"), m_Ports, m_Devices);
    AddPort(Port(2, "COM1", "reader"), m_Ports, m_Devices);

    ASSERT_EQ(m_Devices.size(), 1u);
    EXPECT_EQ(Names(m_Devices[0].vecPorts), (std::vector<std::string>{"COM2", "COM1"}));
    EXPECT_EQ(Names(m_Ports), (std::vector<std::string>{"COM2", "COM1"}));
}

TEST_F(PortAdding, ALaterPortJoinsADeviceInTheMiddleOfTheTree) {
    AddPort(Port(1, "A1", "a"), m_Ports, m_Devices);
    AddPort(Port(2, "B1", "b"), m_Ports, m_Devices);
    AddPort(Port(3, "A2", "a"), m_Ports, m_Devices);

    EXPECT_EQ(Names(m_Ports), (std::vector<std::string>{"A1", "B1", "A2"}));
    EXPECT_EQ(Names(m_Devices), (std::vector<std::string>{"a", "b"}));
    EXPECT_EQ(Names(m_Devices[0].vecPorts), (std::vector<std::string>{"A1", "A2"}));
}

TEST_F(PortAdding, DeviceNamesDifferInTheirCase) {
    AddPort(Port(1, "A1", "reader"), m_Ports, m_Devices);
    AddPort(Port(2, "A2", "Reader"), m_Ports, m_Devices);
    EXPECT_EQ(Names(m_Devices), (std::vector<std::string>{"reader", "Reader"}));
}

TEST_F(PortAdding, BothCopiesCarryTheSameFields) {
    AddPort(Port(7, "COM1", "reader", "text"), m_Ports, m_Devices);
    for (const _PORT_& copy : {m_Ports.at(0), m_Devices.at(0).vecPorts.at(0)}) {
        EXPECT_EQ(copy.nPortID, 7);
        EXPECT_EQ(copy.nPortType, 20100);
        EXPECT_EQ(copy.strPortName, "COM1");
        EXPECT_EQ(copy.strDeviceName, "reader");
        EXPECT_EQ(copy.strDeviceText, "text");
        EXPECT_EQ(copy.hPort, -1);
        EXPECT_TRUE(copy.vecReadCallbacks.empty());
    }
}

TEST_F(PortAdding, TheTreeKeepsTheTextThatItsDeviceCameWith) {
    AddPort(Port(1, "A1", "a", "first"), m_Ports, m_Devices);
    AddPort(Port(2, "A2", "a", "second"), m_Ports, m_Devices);
    EXPECT_EQ(Whole(m_Devices.at(0).szDeviceText), Padded("first"));
    EXPECT_EQ(m_Ports.at(1).strDeviceText, "second");
}

TEST_F(PortAdding, TextsOf127BytesFitAndLongerOnesAreCutThere) {
    AddPort(Port(1, "A1", std::string(127, 'n'), std::string(200, 't')), m_Ports, m_Devices);
    EXPECT_EQ(Whole(m_Devices.at(0).szDeviceName), Padded(std::string(127, 'n')));
    EXPECT_EQ(Whole(m_Devices.at(0).szDeviceText), Padded(std::string(127, 't')));
}
