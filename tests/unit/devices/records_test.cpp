// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>

#include "devices/lookup.h"
#include "tests/unit/devices/port_builders.h"

namespace {

void OnData(void*, int) {}
void OnOtherData(void*, int) {}

} // namespace

TEST(PortRecord, StartsClosedAndUnnumbered) {
    const _PORT_ port;
    EXPECT_EQ(port.nPortID, -1);
    EXPECT_EQ(port.nPortType, 20100);
    EXPECT_EQ(port.strPortName, "");
    EXPECT_EQ(port.strDeviceName, "");
    EXPECT_EQ(port.hPort, -1);
    EXPECT_TRUE(port.vecReadCallbacks.empty());
    EXPECT_EQ(port.strDeviceText, "");
}

TEST(PortRecord, ACopyHasEveryFieldAndACallbackListOfItsOwn) {
    _PORT_ port = Port(4, "COM1", "reader", "text");
    port.nPortType = 5;
    port.hPort = 6;
    port.vecReadCallbacks = {OnData, OnOtherData};

    _PORT_ copy = port;
    port.vecReadCallbacks.clear();

    EXPECT_EQ(copy.nPortID, 4);
    EXPECT_EQ(copy.nPortType, 5);
    EXPECT_EQ(copy.strPortName, "COM1");
    EXPECT_EQ(copy.strDeviceName, "reader");
    EXPECT_EQ(copy.hPort, 6);
    EXPECT_EQ(copy.vecReadCallbacks, (std::vector<KOVAMGR_READ_CALLBACK>{OnData, OnOtherData}));
    EXPECT_EQ(copy.strDeviceText, "text");
}

TEST(DeviceRecord, ACopyHasAllBytesOfBothTextsAndPortsOfItsOwn) {
    _COMM_MGR_DEVICE_INFO_ device = Device("", {Port(1, "A1"), Port(2, "A2")});
    for (size_t i = 0; i < sizeof(device.szDeviceName); ++i) {
        device.szDeviceName[i] = static_cast<char>(i);
        device.szDeviceText[i] = static_cast<char>(0x7f - i);
    }

    const _COMM_MGR_DEVICE_INFO_ copy = device;
    device.vecPorts[0].strPortName = "changed";

    EXPECT_EQ(std::memcmp(copy.szDeviceName, device.szDeviceName, sizeof(copy.szDeviceName)), 0);
    EXPECT_EQ(std::memcmp(copy.szDeviceText, device.szDeviceText, sizeof(copy.szDeviceText)), 0);
    EXPECT_EQ(Names(copy.vecPorts), (std::vector<std::string>{"A1", "A2"}));
}

TEST(PortLookup, TheFirstPortOfANumberIsTheOne) {
    std::vector<_PORT_> ports = {Port(1, "A"), Port(7, "B"), Port(7, "C"), Port(-7, "D")};
    EXPECT_EQ(FindPortByID(ports, 7)->strPortName, "B");
    EXPECT_EQ(FindPortByID(ports, -7)->strPortName, "D");
    EXPECT_EQ(FindPortByID(ports, 8), ports.end());
}

TEST(PortLookup, PortNamesAreComparedByteForByte) {
    const std::vector<_PORT_> ports = {Port(1, "com1"), Port(2, "COM1"), Port(3, "COM1")};
    EXPECT_EQ(FindPortByName(ports, "COM1")->nPortID, 2);
    EXPECT_EQ(FindPortByName(ports, "COM"), ports.end());
}

TEST(DeviceLookup, TheFirstDeviceOfANameIsTheOne) {
    std::vector<_COMM_MGR_DEVICE_INFO_> devices = {
        Device("reader", {Port(1)}), Device("Reader", {Port(2)}), Device("Reader", {Port(3)})};
    EXPECT_EQ(FindDeviceByName(devices, "Reader")->vecPorts.at(0).nPortID, 2);
    EXPECT_EQ(FindDeviceByName(devices, "READER"), devices.end());
}
