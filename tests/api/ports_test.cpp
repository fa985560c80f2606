// SPDX-License-Identifier: MIT
#include "tests/api/host_test.h"

namespace {

using HostPorts = HostTest;

} // namespace

TEST_F(HostPorts, AreOpenedWrittenToAndClosedByTheirIdentifier) {
    InitWith(FakeDevices().Device("Modem").Port("COM1").Port("COM2", 50));
    m_Fake->SetHandle("COM2", 9);
    long result = 5;
    EXPECT_EQ(KOVAMGR_Open(50), 20000);
    EXPECT_EQ(KOVAMGR_Write(50, "hello", 5, 77, &result), 5);
    EXPECT_EQ(KOVAMGR_Close(50), 20000);
    EXPECT_EQ(m_Fake->Journal(), (Lines{"Open COM2 -> 9", "Write 9 5", "Close 9"}));
    EXPECT_EQ(m_Fake->Written("COM2"), (Lines{"hello"}));
    EXPECT_EQ(result, 5);
}

TEST_F(HostPorts, OpeningTwiceSucceedsAndCallsTheAdapterOnce) {
    InitWith(FakeDevices().Device("Modem").Port("COM1"));
    EXPECT_EQ(KOVAMGR_Open(1), 20000);
    EXPECT_EQ(KOVAMGR_Open(1), 20000);
    EXPECT_EQ(m_Fake->Journal(), (Lines{"Open COM1 -> 1"}));
}

TEST_F(HostPorts, UnknownOnesAreNotOpenedAndAreClosedWithSuccess) {
    InitWith(FakeDevices().Device("Modem").Port("COM1"));
    EXPECT_EQ(KOVAMGR_Open(2), 20001);
    EXPECT_EQ(KOVAMGR_Close(2), 20000);
    EXPECT_EQ(KOVAMGR_RegisterCommDataReadCallback(OnRead<1>, 2), 20001);
    EXPECT_EQ(KOVAMGR_UnRegisterCommDataReadCallback(OnRead<1>, 2), 20001);
    EXPECT_TRUE(m_Fake->Journal().empty());
}

TEST_F(HostPorts, WritingToAnUnknownOneStoresTheReason) {
    InitWith(FakeDevices().Device("Modem").Port("COM1"));
    long result = 5;
    EXPECT_EQ(KOVAMGR_Write(2, "abc", 3, 0, &result), -1);
    EXPECT_EQ(result, 20001);
}

TEST_F(HostPorts, WritingToAClosedOneReturnsTheCodeAndStoresNothing) {
    InitWith(FakeDevices().Device("Modem").Port("COM1"));
    long result = 5;
    EXPECT_EQ(KOVAMGR_Write(1, "abc", 3, 0, &result), 20006);
    EXPECT_EQ(result, 5);
}

TEST_F(HostPorts, WritingReturnsCountsAndCodesInOneValue) {
    InitWith(FakeDevices().Device("Modem").Port("COM1"));
    ASSERT_EQ(KOVAMGR_Open(1), 20000);
    long result = 5;
    for (const long count : {0L, 1L, 20001L, 20003L, 20006L}) {
        m_Fake->SetWriteCount(count);
        EXPECT_EQ(KOVAMGR_Write(1, "abc", 3, 0, &result), count);
    }
    EXPECT_EQ(result, 5);
    m_Fake->SetResult(FakeCall::kWrite, OS_ADAPT_FAILED);
    EXPECT_EQ(KOVAMGR_Write(1, "abc", 3, 0, &result), -1);
    EXPECT_EQ(result, 20002);
}

TEST_F(HostPorts, WritingNeedsNoPlaceForTheReason) {
    InitWith(FakeDevices().Device("Modem").Port("COM1"));
    EXPECT_EQ(KOVAMGR_Write(2, "abc", 3, 0, nullptr), -1);
    EXPECT_EQ(KOVAMGR_Write(1, "abc", 3, 0, nullptr), 20006);
    ASSERT_EQ(KOVAMGR_Open(1), 20000);
    EXPECT_EQ(KOVAMGR_Write(1, "abc", 3, 0, nullptr), 3);
    m_Fake->SetResult(FakeCall::kWrite, OS_ADAPT_FAILED);
    EXPECT_EQ(KOVAMGR_Write(1, "abc", 3, 0, nullptr), -1);
}

TEST_F(HostPorts, AnAdapterThatRefusesIsTold) {
    InitWith(FakeDevices().Device("Modem").Port("COM1"));
    m_Fake->SetResult(FakeCall::kOpen, OS_ADAPT_FAILED);
    EXPECT_EQ(KOVAMGR_Open(1), 20002);
    m_Fake->SetResult(FakeCall::kOpen, OS_ADAPT_OK);
    EXPECT_EQ(KOVAMGR_Open(1), 20000);
    m_Fake->SetResult(FakeCall::kClose, OS_ADAPT_FAILED);
    EXPECT_EQ(KOVAMGR_Close(1), 20002);
    EXPECT_EQ(KOVAMGR_Write(1, "abc", 3, 0, nullptr), 3) << "it is open still";
}

TEST_F(HostPorts, TheStateIsTheSameForEveryIdentifier) {
    InitWith(FakeDevices().Device("Modem").Port("COM1"));
    ASSERT_EQ(KOVAMGR_Open(1), 20000);
    for (const int port : {0, 1, 2, 2147483647}) {
        EXPECT_EQ(KOVAMGR_GetPortState(port), 20050) << port;
    }
}

TEST_F(HostPorts, AreEnumeratedWithTheirKind) {
    InitWith(FakeDevices().Device("Modem", "a text").Port("COM1").Port("COM2", 50));
    const auto list = std::make_unique<_KOVAMGR_DEVICEINFOLIST>();
    ASSERT_EQ(KOVAMGR_EnumeratePortInfo(list.get()), 20000);
    EXPECT_EQ(list->nDeviceCount, 1u);
    const _KOVAMGR_DEVICEINFO& device = list->stDevice[0];
    EXPECT_STREQ(device.szDeviceName, "Modem");
    EXPECT_STREQ(device.szDeviceText, "a text");
    EXPECT_EQ(device.nPortCount, 2u);
    EXPECT_STREQ(device.stPort[1].szPortName, "COM2");
    EXPECT_EQ(device.stPort[1].nPortID, 50);
    EXPECT_EQ(device.stPort[1].nPortType, 20100);
}
