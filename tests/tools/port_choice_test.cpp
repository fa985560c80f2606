// SPDX-License-Identifier: MIT
#include "tools/kovasctl/port_choice.h"

#include <gtest/gtest.h>

namespace {

const ChosenPort kLast{"cable", 1, {7, "/dev/ttyUSB1", 0}};

Snapshot WithDevice(const std::string& name, const std::vector<std::string>& ports) {
    Device device{name, "", {}};
    for (const std::string& port : ports) {
        device.ports.push_back({static_cast<int32_t>(20 + device.ports.size()), port, 0});
    }
    return {{device}, 1};
}

std::string FoundAgain(const Snapshot& snapshot, const std::string& wanted) {
    const auto found = FindAgain(snapshot, kLast, wanted);
    return found.size() == 1 ? found.front().port.name : "";
}

TEST(PortFoundAgain, IsTheOneOfTheSameNameAlsoAtAnotherPlace) {
    const Snapshot snapshot = WithDevice("cable", {"/dev/ttyUSB1", "/dev/ttyUSB2"});
    EXPECT_EQ("/dev/ttyUSB1", FoundAgain(snapshot, "7"));
}

TEST(PortFoundAgain, IsTheOneAtTheSamePlaceWhenNamesHaveChanged) {
    const Snapshot snapshot = WithDevice("cable", {"/dev/ttyUSB4", "/dev/ttyUSB5"});
    EXPECT_EQ("/dev/ttyUSB5", FoundAgain(snapshot, "7"));
}

TEST(PortFoundAgain, IsNoneOfADeviceThatHasLessPortsNow) {
    EXPECT_EQ("", FoundAgain(WithDevice("cable", {"/dev/ttyUSB4"}), "ttyUSB"));
}

TEST(PortFoundAgain, MayBeAnotherDevicesWhenItsNameWasAskedFor) {
    const Snapshot snapshot = WithDevice("cable in update mode", {"/dev/ttyUSB1"});
    EXPECT_EQ("/dev/ttyUSB1", FoundAgain(snapshot, "ttyusb1"));
    EXPECT_EQ("", FoundAgain(snapshot, "7"));
    EXPECT_EQ("", FoundAgain(snapshot, "cable"));
}

TEST(PortFoundAgain, IsNeverOneOfAnotherDeviceAndAnotherName) {
    EXPECT_EQ("", FoundAgain(WithDevice("cable B", {"/dev/ttyUSB2"}), "cable"));
    EXPECT_EQ("", FoundAgain(WithDevice("cable B", {"/dev/ttyUSB2"}), "ttyUSB"));
}

TEST(PortMatch, TakesAShortNumberForAnIdentifierOnly) {
    const Snapshot snapshot = WithDevice("cable 21234", {"/dev/ttyUSB3"});
    EXPECT_TRUE(MatchPorts(snapshot, "3").empty());
    EXPECT_TRUE(MatchPorts(snapshot, "123").empty());
    EXPECT_EQ(1U, MatchPorts(snapshot, "20").size());
    EXPECT_EQ(1U, MatchPorts(snapshot, "1234").size());
}

TEST(PortMatch, PrefersAWholeNameToAPart) {
    const Snapshot snapshot = WithDevice("cable", {"/dev/ttyUSB1", "/dev/ttyUSB10"});
    EXPECT_EQ(1U, MatchPorts(snapshot, "/dev/ttyUSB1").size());
    EXPECT_EQ(2U, MatchPorts(snapshot, "ttyUSB1").size());
}

} // namespace
