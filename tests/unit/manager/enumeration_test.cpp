// SPDX-License-Identifier: MIT
#include <atomic>
#include <cstring>
#include <memory>
#include <thread>

#include "tests/unit/manager/manager_test.h"

namespace {

class Enumeration : public ManagerTest {
  protected:
    Enumeration() { std::memset(m_List.get(), 0xee, sizeof(*m_List)); }

    const _KOVAMGR_DEVICEINFOLIST& Enumerate() {
        EXPECT_EQ(m_Manager.EnumeratePortInfo(m_List.get()), 20000);
        return *m_List;
    }

    // Whether all bytes from this address on are this one.
    static bool IsFilled(const void* from, size_t size, char with) {
        return std::string(static_cast<const char*>(from), size) == std::string(size, with);
    }

    std::unique_ptr<_KOVAMGR_DEVICEINFOLIST> m_List = std::make_unique<_KOVAMGR_DEVICEINFOLIST>();
};

} // namespace

TEST_F(Enumeration, IntoNullIsABadArgumentAlsoBeforeInit) {
    EXPECT_EQ(m_Manager.EnumeratePortInfo(nullptr), 20001);
    InitWith(FakeDevices());
    EXPECT_EQ(m_Manager.EnumeratePortInfo(nullptr), 20001);
}

TEST_F(Enumeration, BeforeInitFailsForThatAndLeavesTheList) {
    EXPECT_EQ(m_Manager.EnumeratePortInfo(m_List.get()), 20003);
    EXPECT_TRUE(IsFilled(m_List.get(), sizeof(*m_List), '\xee'));
}

TEST_F(Enumeration, ThatFailsDoesNotWaitForTheLock) {
    JMutexGuard lock(ManagerProbe::PortMutex(m_Manager));
    std::atomic<bool> isDone{false};
    std::thread caller([&] {
        EXPECT_EQ(m_Manager.EnumeratePortInfo(nullptr), 20001);
        EXPECT_EQ(m_Manager.EnumeratePortInfo(m_List.get()), 20003);
        isDone = true;
    });
    EXPECT_TRUE(WaitUntil([&] { return isDone.load(); }));
    caller.join();
}

TEST_F(Enumeration, ThatSucceedsWaitsForTheLock) {
    InitWith(FakeDevices());
    std::atomic<bool> isDone{false};
    std::thread caller;
    {
        JMutexGuard lock(ManagerProbe::PortMutex(m_Manager));
        caller = std::thread([&] {
            Enumerate();
            isDone = true;
        });
        EXPECT_FALSE(WaitUntil([&] { return isDone.load(); }, std::chrono::milliseconds(100)));
    }
    caller.join();
    EXPECT_TRUE(isDone);
}

TEST_F(Enumeration, OfNoDevicesIsAllZero) {
    InitWith(FakeDevices());
    Enumerate();
    EXPECT_TRUE(IsFilled(m_List.get(), sizeof(*m_List), '\0'));
}

TEST_F(Enumeration, ShowsDevicesAndPortsInOrderAndIsZeroElsewhere) {
    InitWith(FakeDevices()
                 .Device("Modem", "ground floor")
                 .Port("COM2", 9)
                 .Port("COM1")
                 .Device("Reader", "roof")
                 .Port("COM3"));
    _KOVAMGR_DEVICEINFOLIST expected = {};
    expected.nDeviceCount = 2;
    std::strcpy(expected.stDevice[0].szDeviceName, "Modem");
    std::strcpy(expected.stDevice[0].szDeviceText, "ground floor");
    expected.stDevice[0].nPortCount = 2;
    expected.stDevice[0].stPort[0] = {"COM2", 9, 20100};
    expected.stDevice[0].stPort[1] = {"COM1", 1, 20100};
    std::strcpy(expected.stDevice[1].szDeviceName, "Reader");
    std::strcpy(expected.stDevice[1].szDeviceText, "roof");
    expected.stDevice[1].nPortCount = 1;
    expected.stDevice[1].stPort[0] = {"COM3", 2, 20100};

    EXPECT_EQ(std::memcmp(&Enumerate(), &expected, sizeof(expected)), 0);
}

TEST_F(Enumeration, ShowsNothingOfOpenPorts) {
    InitWith(FakeDevices().Device("Modem").Port("COM1"));
    const _KOVAMGR_DEVICEINFOLIST before = Enumerate();
    ASSERT_EQ(m_Manager.Open(1), 20000);
    ASSERT_EQ(m_Manager.RegisterReadCallBack(1, OnRead<1>), 20000);
    EXPECT_EQ(std::memcmp(&Enumerate(), &before, sizeof(before)), 0);
}

TEST_F(Enumeration, Of70DevicesCountsAllAndShowsTheFirst64) {
    InitWith(FakeDevices::Many(64, 1));
    FakeDevices later;
    for (int i = 65; i <= 70; ++i) {
        later.Device("Device " + std::to_string(i)).Port("COM" + std::to_string(i));
    }
    later.Apply(*m_Fake);
    m_Manager.DetermineAddPort();

    const _KOVAMGR_DEVICEINFOLIST& list = Enumerate();
    EXPECT_EQ(list.nDeviceCount, 70u);
    for (int i = 0; i < 64; ++i) {
        EXPECT_EQ(std::string(list.stDevice[i].szDeviceName), "Device " + std::to_string(i + 1));
        EXPECT_EQ(list.stDevice[i].stPort[0].nPortID, i + 1);
    }
}

TEST_F(Enumeration, OfADeviceWith20PortsShowsTheFirst16) {
    InitWith(FakeDevices::Many(1, 16));
    FakeDevices later;
    later.Device("Device 1");
    for (int i = 17; i <= 20; ++i) {
        later.Port("COM" + std::to_string(i));
    }
    later.Apply(*m_Fake);
    m_Manager.DetermineAddPort();
    ASSERT_EQ(Tree().at(0).vecPorts.size(), 20u);

    const _KOVAMGR_DEVICEINFO& device = Enumerate().stDevice[0];
    EXPECT_EQ(device.nPortCount, 16u);
    for (int i = 0; i < 16; ++i) {
        EXPECT_EQ(std::string(device.stPort[i].szPortName), "COM" + std::to_string(i + 1));
    }
    EXPECT_EQ(std::string(device.szDeviceText), "");
}

TEST_F(Enumeration, APortNameOf255BytesArrivesWholeAndTerminated) {
    const std::string name(255, 'n');
    InitWith(FakeDevices().Device("Modem").Port(name, 77));
    const _KOVAMGR_PORTINFO& port = Enumerate().stDevice[0].stPort[0];
    EXPECT_EQ(std::string(port.szPortName, 256), name + std::string(1, '\0'));
    EXPECT_EQ(port.nPortID, 77);
}

TEST_F(Enumeration, ADeviceNameAndTextOf127BytesArriveWholeAndTerminated) {
    InitWith(FakeDevices().Device(std::string(127, 'n'), std::string(127, 't')).Port("COM1"));
    const _KOVAMGR_DEVICEINFO& device = Enumerate().stDevice[0];
    EXPECT_EQ(std::string(device.szDeviceName, 128), std::string(127, 'n') + '\0');
    EXPECT_EQ(std::string(device.szDeviceText, 128), std::string(127, 't') + '\0');
}
