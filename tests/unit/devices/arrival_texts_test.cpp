// SPDX-License-Identifier: MIT
//
// Names and texts that are long, unterminated, or hold per-cent signs.
#include "tests/unit/manager/manager_test.h"

namespace {

using ArrivalTexts = ManagerTest;

class PortNameInTheLog : public ManagerTest {
  protected:
    // The line that names the only reported port, without its time, level and end.
    std::string LogOf(const std::string& name) {
        FakeDevices().Device("Modem").Port(name).Apply(*m_Fake);
        m_Manager.DetermineAddPort();
        const std::string log = NewLog();
        const std::string before =
            Info("DetermineAddPort() Port of Device Count=1 !") + "[TIME] INFO:";
        const std::string after = "\n" + Info("Leave DetermineAddPort()");
        const size_t start = log.find(before);
        const size_t end = log.find(after);
        if (start == std::string::npos || end == std::string::npos) {
            return "no such line in: " + log;
        }
        return log.substr(start + before.size(), end - start - before.size());
    }
};

} // namespace

TEST_F(ArrivalTexts, OfTheGreatestLengthAreStoredWhole) {
    LoadWith(FakeDevices()
                 .Device(std::string(127, 'd'), std::string(127, 't'))
                 .Port(std::string(255, 'p')));
    EXPECT_EQ(Ports().at(0).strPortName, std::string(255, 'p'));
    EXPECT_EQ(Ports().at(0).strDeviceName, std::string(127, 'd'));
    EXPECT_EQ(Ports().at(0).strDeviceText, std::string(127, 't'));
    EXPECT_EQ(std::string(Tree().at(0).szDeviceName, 128), std::string(127, 'd') + '\0');
    EXPECT_EQ(std::string(Tree().at(0).szDeviceText, 128), std::string(127, 't') + '\0');
}

TEST_F(ArrivalTexts, WithoutATerminatorAreCutOneByteShortOfTheirArray) {
    LoadWith(FakeDevices()
                 .Device(std::string(128, 'd'), std::string(128, 't'))
                 .Port(std::string(256, 'p')));
    EXPECT_EQ(Ports().at(0).strPortName, std::string(255, 'p'));
    EXPECT_EQ(Ports().at(0).strDeviceName, std::string(127, 'd'));
    EXPECT_EQ(Ports().at(0).strDeviceText, std::string(127, 't'));
    EXPECT_EQ(std::string(Tree().at(0).szDeviceName, 128), std::string(127, 'd') + '\0');
}

TEST_F(ArrivalTexts, WithoutATerminatorAreKnownAgainAtTheNextScan) {
    FakeDevices devices;
    devices.Device(std::string(128, 'd')).Port(std::string(256, 'p')).Port("COM2");
    LoadWith(devices);
    m_Manager.DetermineAddPort();
    EXPECT_EQ(Ports().size(), 2u);
    EXPECT_EQ(Tree().size(), 1u);
    m_Manager.DetermineSubtractPort();
    EXPECT_EQ(Ports().size(), 2u) << "present, with as many ports as before";
    devices.PortCount(1).Apply(*m_Fake);
    m_Manager.DetermineSubtractPort();
    ASSERT_EQ(Ports().size(), 1u);
    EXPECT_EQ(Ports().at(0).strPortName, std::string(255, 'p'));
}

TEST_F(ArrivalTexts, MayBeEmpty) {
    LoadWith(FakeDevices().Device("").Port(""));
    EXPECT_EQ(PortLines(), (Lines{" = 1"}));
    EXPECT_EQ(TreeLines(), (Lines{": "}));
    m_Manager.DetermineAddPort();
    EXPECT_EQ(Ports().size(), 1u);
}

TEST_F(PortNameInTheLog, IsAFormatSoThatTwoPerCentSignsAreOne) {
    LoadWith(FakeDevices());
    EXPECT_EQ(LogOf("100%%"), "100%");
    EXPECT_EQ(LogOf("%%%%"), "%%");
    EXPECT_EQ(LogOf("a%%b%%c"), "a%b%c");
}

TEST_F(PortNameInTheLog, IsKeptUnformattedInItsRecord) {
    LoadWith(FakeDevices());
    LogOf("100%%");
    EXPECT_EQ(PortLines(), (Lines{"100%% = 1"}));
}

TEST_F(PortNameInTheLog, WithConversionsReadsAndWritesNoForeignMemory) {
    LoadWith(FakeDevices());
    for (const char* name : {"%s", "%n", "%s%s%s%s%n%n%n%n", "%hhn", "%ls", "%p", "%", "a%", "%.*s",
                             "%1$s", "%1$n", "% %"}) {
        const std::string log = LogOf(name);
        EXPECT_LE(log.size(), 255u) << name;
        EXPECT_EQ(log.find("no such line"), std::string::npos) << log;
    }
}

TEST_F(PortNameInTheLog, WithAGiantWidthStaysShort) {
    LoadWith(FakeDevices());
    for (const char* name : {"%999999d", "%999999999999999999d", "%*d", "%-99999s", "%.99999f"}) {
        EXPECT_LE(LogOf(name).size(), 255u) << name;
    }
}

TEST_F(PortNameInTheLog, OfTheGreatestLengthIsWhole) {
    LoadWith(FakeDevices());
    EXPECT_EQ(LogOf(std::string(255, 'p')), std::string(255, 'p'));
}
