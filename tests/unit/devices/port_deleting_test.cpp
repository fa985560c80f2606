// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>

#include "devices/port_book.h"
#include "tests/unit/devices/port_builders.h"

namespace {

void OnData(void*, int) {}
void OnOtherData(void*, int) {}

} // namespace

TEST(DeletingFromTheTree, ThePortGoesAndItsNameIsReturned) {
    std::vector<_COMM_MGR_DEVICE_INFO_> devices = {
        Device("a", {Port(1, "A1"), Port(2, "A2"), Port(3, "A3")})};
    EXPECT_EQ(DeleteFromTree(2, devices), (std::vector<std::string>{"A2"}));
    EXPECT_EQ(Names(devices.at(0).vecPorts), (std::vector<std::string>{"A1", "A3"}));
}

TEST(DeletingFromTheTree, TheOnlyPortTakesItsDeviceAlong) {
    std::vector<_COMM_MGR_DEVICE_INFO_> devices = {
        Device("a", {Port(1, "A1")}), Device("b", {Port(2, "B1")}), Device("c", {Port(3, "C1")})};
    EXPECT_EQ(DeleteFromTree(2, devices), (std::vector<std::string>{"B1"}));
    EXPECT_EQ(Names(devices), (std::vector<std::string>{"a", "c"}));
}

TEST(DeletingFromTheTree, AnUnknownNumberStillDropsEveryDeviceWithoutPorts) {
    std::vector<_COMM_MGR_DEVICE_INFO_> devices = {
        Device("empty first", {}), Device("a", {Port(1, "A1")}), Device("empty", {}),
        Device("empty as well", {})};
    EXPECT_TRUE(DeleteFromTree(99, devices).empty());
    EXPECT_EQ(Names(devices), (std::vector<std::string>{"a"}));
}

TEST(DeletingFromTheTree, AnUnknownNumberInAnEmptyTreeIsNothing) {
    std::vector<_COMM_MGR_DEVICE_INFO_> devices;
    EXPECT_TRUE(DeleteFromTree(1, devices).empty());
    EXPECT_TRUE(devices.empty());
}

TEST(DeletingFromTheTree, TheFirstPortOfThatNumberGoesFromEachDevice) {
    std::vector<_COMM_MGR_DEVICE_INFO_> devices = {Device("a", {Port(7, "A1"), Port(7, "A2")}),
                                                   Device("b", {Port(1, "B1"), Port(7, "B2")})};
    EXPECT_EQ(DeleteFromTree(7, devices), (std::vector<std::string>{"A1", "B2"}));
    EXPECT_EQ(Names(devices.at(0).vecPorts), (std::vector<std::string>{"A2"}));
    EXPECT_EQ(Names(devices.at(1).vecPorts), (std::vector<std::string>{"B1"}));
}

TEST(DeletingFromTheTree, AnEmptiedDeviceRestartsTheWalk) {
    // The walk starts over when "b" is emptied, and meets the second port 7 of "a".
    std::vector<_COMM_MGR_DEVICE_INFO_> devices = {
        Device("a", {Port(7, "A1"), Port(7, "A2"), Port(1, "A3")}), Device("b", {Port(7, "B1")})};
    EXPECT_EQ(DeleteFromTree(7, devices), (std::vector<std::string>{"A1", "B1", "A2"}));
    EXPECT_EQ(Names(devices), (std::vector<std::string>{"a"}));
    EXPECT_EQ(Names(devices.at(0).vecPorts), (std::vector<std::string>{"A3"}));
}

TEST(DeletingFromThePorts, OnlyTheFirstOfThatNumberGoes) {
    std::vector<_PORT_> ports = {Port(7, "A"), Port(1, "B"), Port(7, "C")};
    DeleteFromPorts(7, ports);
    EXPECT_EQ(Names(ports), (std::vector<std::string>{"B", "C"}));
}

TEST(DeletingFromThePorts, AnUnknownNumberChangesNothing) {
    std::vector<_PORT_> ports = {Port(1, "A")};
    DeleteFromPorts(2, ports);
    EXPECT_EQ(Names(ports), (std::vector<std::string>{"A"}));
    ports.clear();
    DeleteFromPorts(2, ports);
    EXPECT_TRUE(ports.empty());
}

TEST(DeletingFromThePorts, TheRestKeepsItsOrderItsHandlesAndItsCallbacks) {
    std::vector<_PORT_> ports = {Port(1, "A"), Port(2, "B"), Port(3, "C"), Port(4, "D")};
    ports[0].hPort = 10;
    ports[2].hPort = 30;
    ports[2].vecReadCallbacks = {OnData, OnOtherData};
    ports[3].vecReadCallbacks = {OnOtherData};

    DeleteFromPorts(2, ports);

    EXPECT_EQ(IDs(ports), (std::vector<int32_t>{1, 3, 4}));
    EXPECT_EQ(ports[0].hPort, 10);
    EXPECT_EQ(ports[1].hPort, 30);
    EXPECT_EQ(ports[2].hPort, -1);
    EXPECT_TRUE(ports[0].vecReadCallbacks.empty());
    EXPECT_EQ(ports[1].vecReadCallbacks, (std::vector<KOVAMGR_READ_CALLBACK>{OnData, OnOtherData}));
    EXPECT_EQ(ports[2].vecReadCallbacks, (std::vector<KOVAMGR_READ_CALLBACK>{OnOtherData}));
}
