// SPDX-License-Identifier: MIT
#include <climits>
#include <cstring>

#include "tests/system/attached_host.h"

namespace {

int s_Longest = 0;
int s_Deliveries = 0;

void NoteDelivery(void* data, int length) {
    s_Longest = length > s_Longest ? length : s_Longest;
    ++s_Deliveries;
    volatile char sink = 0;
    for (int i = 0; i <= length; ++i) { // with the zero byte behind the data
        sink = static_cast<const char*>(data)[i];
    }
    EXPECT_EQ(0, sink);
}

// What an adapter can get wrong in its counts, and what a host sees of it.
class HostileCounts : public AttachedHost {
  protected:
    // Scans the wrong table in all three ways, then a right one, and uses that.
    void CheckThatTheLibraryBears(const FakeDevices& devices, unsigned expectedDevices) {
        devices.Apply(*m_Fake);
        ASSERT_EQ(KOVAMGR_OK, Init());
        EXPECT_EQ(expectedDevices, Enumerate()->nDeviceCount);
        EXPECT_TRUE(m_Fake->NotifyOnThread(OS_ADAPT_DEVICE_INSERT));
        EXPECT_EQ(expectedDevices, Enumerate()->nDeviceCount);
        EXPECT_TRUE(m_Fake->NotifyOnThread(OS_ADAPT_DEVICE_PULLOUT));
        EXPECT_EQ(KOVAMGR_OK, KOVAMGR_Release());
        FakeDevices::Many(1, 2).Apply(*m_Fake);
        CheckThatANewManagerWorks();
    }
};

class HostileDeviceCount : public HostileCounts, public testing::WithParamInterface<int> {};
class HostilePortCount : public HostileCounts, public testing::WithParamInterface<int> {};
class HostileReadLength : public HostileCounts, public testing::WithParamInterface<long> {};

} // namespace

TEST_P(HostileDeviceCount, NothingPastTheTableIsRead) {
    const unsigned filled = GetParam() > 0 ? OS_ADAPT_MAX_DEVICES : 0;
    CheckThatTheLibraryBears(FakeDevices::Many(64, 1).DeviceCount(GetParam()), filled);
    const std::string line = "Enum Device Count=" + std::to_string(GetParam()) + " !";
    EXPECT_LT(0, LogLines(line)) << "the count is logged as it is";
}

INSTANTIATE_TEST_SUITE_P(Counts, HostileDeviceCount,
                         testing::Values(65, 100000, INT_MAX, -1, INT_MIN));

TEST_P(HostilePortCount, NothingPastTheDeviceIsRead) {
    const unsigned devices = GetParam() > 0 ? 2 : 1;
    FakeDevices table = FakeDevices::Many(1, 1);
    table.Device("Full", "no name of a port");
    for (int port = 1; port <= OS_ADAPT_MAX_PORTS; ++port) {
        table.Port("FULL" + std::to_string(port));
    }
    CheckThatTheLibraryBears(table.PortCount(GetParam()), devices);
    EXPECT_EQ(0, LogLines("no name of a port")) << "the text stands behind the last port";
    const std::string line = "Port of Device Count=" + std::to_string(GetParam()) + " !";
    EXPECT_LT(0, LogLines(line)) << "the count is logged as it is";
}

INSTANTIATE_TEST_SUITE_P(Counts, HostilePortCount,
                         testing::Values(17, 100000, INT_MAX, -1, INT_MIN));

TEST_F(HostileCounts, TheLastDevicesPortsAreBoundedByItsOwnArray) {
    // Behind the last port of the last device stands its text, then the end of the record.
    FakeDevices table = FakeDevices::Many(64, 16);
    CheckThatTheLibraryBears(table.PortCount(INT_MAX).DeviceCount(INT_MAX), 64);
}

TEST_F(HostileCounts, ARecordOfArbitraryBytesIsBorne) {
    for (const int byte : {0xff, 0x41, 0x7f, 0x80, 0x25}) {
        FakeDevices table;
        std::memset(&table.Raw(), byte, sizeof table.Raw());
        table.Apply(*m_Fake);
        EXPECT_EQ(KOVAMGR_OK, Init());
        EXPECT_LE(Enumerate()->nDeviceCount, 1U) << "all devices have the same name";
        EXPECT_TRUE(m_Fake->NotifyOnThread(OS_ADAPT_DEVICE_PULLOUT));
        EXPECT_EQ(KOVAMGR_OK, KOVAMGR_Release());
    }
    FakeDevices::Many(1, 2).Apply(*m_Fake);
    CheckThatANewManagerWorks();
}

TEST_P(HostileReadLength, ACallbackReceivesAtMostWhatWasAskedFor) {
    InitAndOpen();
    ASSERT_EQ(KOVAMGR_OK, KOVAMGR_RegisterCommDataReadCallback(NoteDelivery, 1));
    FakeRead lie;
    lie.bytes = "x";
    lie.count = GetParam();
    m_Fake->PushRead("COM1", lie);
    const long reads = m_Fake->Calls(FakeCall::kRead);
    EXPECT_TRUE(WaitUntil([&] { return m_Fake->Calls(FakeCall::kRead) > reads + 4; }));
    EXPECT_EQ(KOVAMGR_OK, KOVAMGR_UnRegisterCommDataReadCallback(NoteDelivery, 1));
    EXPECT_EQ(GetParam() > 0 ? 1 : 0, s_Deliveries);
    EXPECT_EQ(GetParam() > 0 ? KOVAMGR_READ_SIZE : 0, s_Longest);
    EXPECT_EQ(KOVAMGR_OK, KOVAMGR_Release());
    CheckThatANewManagerWorks();
}

INSTANTIATE_TEST_SUITE_P(Lengths, HostileReadLength,
                         testing::Values(5000, 4097, INT_MAX, LONG_MAX, -1, INT_MIN, LONG_MIN));

TEST_F(HostileCounts, AnOpenThatSucceedsWithTheHandleOfAClosedPortLeavesItClosed) {
    m_Fake->SetHandle("COM1", OS_ADAPT_NO_HANDLE);
    ASSERT_EQ(KOVAMGR_OK, Init());
    EXPECT_EQ(KOVAMGR_OK, KOVAMGR_Open(1));
    long reason = 7;
    EXPECT_EQ(KOVAMGR_ERR_NO_HANDLE, KOVAMGR_Write(1, "x", 1, 0, &reason));
    EXPECT_EQ(7, reason);
    EXPECT_EQ(KOVAMGR_OK, KOVAMGR_Close(1));
    EXPECT_EQ(KOVAMGR_OK, KOVAMGR_Release());
    EXPECT_EQ(0, JournalLines("Close -1"));
    EXPECT_EQ(0, m_Fake->Calls(FakeCall::kWrite));
}
