// SPDX-License-Identifier: MIT
#include "tests/harness/capture_stdout.h"
#include "tests/unit/manager/manager_test.h"

namespace {

std::string DeviceCount(int count) {
    return Info("DetermineAddPort() Enum Device Count=" + std::to_string(count) + " !");
}
std::string PortCount(int count) {
    return Info("DetermineAddPort() Port of Device Count=" + std::to_string(count) + " !");
}

class ArrivalLog : public ManagerTest {
  protected:
    // What a rescan writes between its first and its last line.
    std::string Scan(const FakeDevices& devices) {
        devices.Apply(*m_Fake);
        m_Manager.DetermineAddPort();
        const std::string log = NewLog();
        const std::string enter = Info("Enter DetermineAddPort()");
        const std::string leave = Info("Leave DetermineAddPort()");
        EXPECT_EQ(log.substr(0, enter.size()), enter);
        EXPECT_EQ(log.substr(log.size() - leave.size()), leave);
        return log.substr(enter.size(), log.size() - enter.size() - leave.size());
    }
};

} // namespace

TEST_F(ArrivalLog, OfNoDevicesIsTheirCount) {
    LoadWith(FakeDevices());
    EXPECT_EQ(Scan(FakeDevices()), DeviceCount(0));
}

TEST_F(ArrivalLog, NamesEveryReportedPort) {
    LoadWith(FakeDevices());
    EXPECT_EQ(
        Scan(FakeDevices().Device("Modem").Port("COM1").Port("COM2").Device("Reader").Port("COM3")),
        DeviceCount(2) + PortCount(2) + Info("COM1") + Info("COM2") + PortCount(1) + Info("COM3"));
}

TEST_F(ArrivalLog, NamesKnownPortsAsWell) {
    LoadWith(FakeDevices().Device("Modem").Port("COM1"));
    EXPECT_EQ(Scan(FakeDevices().Device("Reader").Port("COM1")),
              DeviceCount(1) + PortCount(1) + Info("COM1"));
}

TEST_F(ArrivalLog, OfADeviceWithoutPortsIsItsCount) {
    LoadWith(FakeDevices());
    EXPECT_EQ(Scan(FakeDevices().Device("Empty").Device("Modem").Port("COM1")),
              DeviceCount(2) + PortCount(0) + PortCount(1) + Info("COM1"));
}

TEST_F(ArrivalLog, OfAFailedEnumerationIsNothing) {
    LoadWith(FakeDevices());
    m_Fake->SetResult(FakeCall::kEnum, OS_ADAPT_FAILED);
    EXPECT_EQ(Scan(FakeDevices().Device("Modem").Port("COM1")), "");
    EXPECT_TRUE(Ports().empty());
}

TEST_F(ArrivalLog, AnyResultOfAnEnumerationBut30000IsAFailure) {
    LoadWith(FakeDevices());
    for (const int result : {0, 1, -1, 20000, 29999, 30001}) {
        m_Fake->SetResult(FakeCall::kEnum, result);
        EXPECT_EQ(Scan(FakeDevices().Device("Modem").Port("COM1")), "") << result;
        EXPECT_TRUE(Ports().empty());
    }
}

TEST_F(ArrivalLog, ReportsCountsAsTheyAreAndReadsNoFurtherThanTheArrays) {
    LoadWith(FakeDevices());
    std::string ports;
    FakeDevices devices = FakeDevices::Many(64, 1);
    for (int i = 1; i <= 64; ++i) {
        ports += PortCount(1) + Info("COM" + std::to_string(i));
    }
    EXPECT_EQ(Scan(devices.DeviceCount(65)), DeviceCount(65) + ports);
    EXPECT_EQ(Scan(devices.DeviceCount(2147483647)), DeviceCount(2147483647) + ports);
    EXPECT_EQ(Ports().size(), 64u);
}

TEST_F(ArrivalLog, ReportsPortCountsAsTheyAreAndReadsNoFurtherThanTheArray) {
    LoadWith(FakeDevices());
    std::string names;
    for (int i = 1; i <= 16; ++i) {
        names += Info("COM" + std::to_string(i));
    }
    EXPECT_EQ(Scan(FakeDevices::Many(1, 16).PortCount(17)), DeviceCount(1) + PortCount(17) + names);
    EXPECT_EQ(Scan(FakeDevices::Many(1, 16).PortCount(2147483647)),
              DeviceCount(1) + PortCount(2147483647) + names);
    EXPECT_EQ(Ports().size(), 16u);
}

TEST_F(ArrivalLog, NegativeCountsAreReportedAndAreNone) {
    LoadWith(FakeDevices());
    FakeDevices devices = FakeDevices().Device("Modem").Port("COM1");
    EXPECT_EQ(Scan(devices.PortCount(-5)), DeviceCount(1) + PortCount(-5));
    EXPECT_EQ(Scan(devices.DeviceCount(-2147483647)), DeviceCount(-2147483647));
    EXPECT_TRUE(Ports().empty());
}

TEST_F(ArrivalLog, PrintsNothing) {
    LoadWith(FakeDevices());
    CaptureStdout output;
    Scan(FakeDevices().Device("Modem").Port("COM1"));
    EXPECT_EQ(output.Text(), "");
}
