// SPDX-License-Identifier: MIT
//
// A host on the manager, with a neighbour's port open while other devices come and go.
#include <cerrno>
#include <filesystem>
#include <functional>
#include <memory>
#include <mutex>

#include "KOVASMgr.h"
#include "tests/adapters/linux/linux_bench.h"
#include "tests/adapters/linux/sample_devices.h"
#include "tests/harness/wait_until.h"

namespace {

std::mutex s_Mutex;
std::string s_Received; // guarded by s_Mutex

void OnData(void* data, int length) {
    const std::lock_guard<std::mutex> lock(s_Mutex);
    s_Received.append(static_cast<const char*>(data), static_cast<size_t>(length));
}

bool WaitForText(const std::string& text) {
    return WaitUntil([&] {
        const std::lock_guard<std::mutex> lock(s_Mutex);
        return s_Received.find(text) != std::string::npos;
    });
}

// "FTDI FT232R N(/dev/ttyUSB0)", as the host sees it.
std::string HostList() {
    const auto list = std::make_unique<_KOVAMGR_DEVICEINFOLIST>();
    KOVAMGR_EnumeratePortInfo(list.get());
    std::string text;
    for (uint32_t device = 0; device < list->nDeviceCount; ++device) {
        const auto& info = list->stDevice[device];
        text += std::string(device == 0 ? "" : " ") + info.szDeviceName + "(";
        for (uint32_t port = 0; port < info.nPortCount; ++port) {
            text += std::string(port == 0 ? "" : " ") + info.stPort[port].szPortName;
        }
        text += ")";
    }
    return text;
}

// -1 when no port has this name.
int IdOf(const std::string& name) {
    const auto list = std::make_unique<_KOVAMGR_DEVICEINFOLIST>();
    KOVAMGR_EnumeratePortInfo(list.get());
    for (uint32_t device = 0; device < list->nDeviceCount; ++device) {
        for (uint32_t port = 0; port < list->stDevice[device].nPortCount; ++port) {
            if (name == list->stDevice[device].stPort[port].szPortName) {
                return list->stDevice[device].stPort[port].nPortID;
            }
        }
    }
    return -1;
}

class NeighbourPort : public LinuxBench, public testing::WithParamInterface<const char*> {
  protected:
    NeighbourPort() : LinuxBench(GetParam()) {
        std::filesystem::create_symlink(KOVASMGR_LINUX_ADAPTER, "libOSAdapt.so");
        m_Machine.Plug(Neighbour());
    }
    ~NeighbourPort() override { KOVAMGR_Release(); }

    // The host starts, with the neighbour's port open and others besides.
    void Start(const std::vector<std::string>& others) {
        ASSERT_EQ(KOVAMGR_OK, KOVAMGR_Init(m_Scratch.LogDirectory().c_str()));
        m_Port = IdOf("/dev/ttyUSB0");
        Open(m_Port);
        for (const std::string& other : others) {
            Open(IdOf(other));
        }
        ExpectSurvival();
    }

    static void Open(int port) {
        ASSERT_GE(port, 0);
        ASSERT_EQ(KOVAMGR_OK, KOVAMGR_RegisterCommDataReadCallback(OnData, port));
        ASSERT_EQ(KOVAMGR_OK, KOVAMGR_Open(port));
    }

    // Waits for the host to see these beside the neighbour; then its port is still the same and
    // passes bytes both ways.
    void ExpectSurvivalWith(const std::string& others) {
        const std::string expected = std::string(kNeighbour) + (others.empty() ? "" : " " + others);
        EXPECT_TRUE(WaitUntil([&] { return HostList() == expected; })) << HostList();
        ExpectSurvival();
    }

    void ExpectSurvival() {
        EXPECT_EQ(m_Port, IdOf("/dev/ttyUSB0"));
        EXPECT_EQ(2, KOVAMGR_Write(m_Port, "to", 2, 0, nullptr));
        EXPECT_EQ("to", m_Machine.FarEnd("ttyUSB0").Receive(2));
        const std::string text = "from " + std::to_string(++m_Rounds) + ";";
        ASSERT_TRUE(m_Machine.FarEnd("ttyUSB0").Send(text));
        EXPECT_TRUE(WaitForText(text));
    }

    int m_Port = -1;
    int m_Rounds = 0;
};

} // namespace

KOVASMGR_EITHER_SOURCE(NeighbourPort);

TEST_P(NeighbourPort, SurvivesAnArrivalAndARemoval) {
    Start({});
    m_Machine.Plug(Other());
    ExpectSurvivalWith(kOther);
    Open(IdOf("/dev/ttyUSB1"));
    m_Machine.Pull(Other());
    ExpectSurvivalWith("");
}

TEST_P(NeighbourPort, SurvivesAReplugOfAnOpenPort) {
    m_Machine.Plug(Other());
    Start({"/dev/ttyUSB1"});
    const int before = IdOf("/dev/ttyUSB1");
    m_Machine.Pull(Other());
    m_Machine.Plug(Other());
    EXPECT_TRUE(WaitUntil([&] {
        const int now = IdOf("/dev/ttyUSB1");
        return now != before && now != -1;
    }));
    ExpectSurvivalWith(kOther);
    Open(IdOf("/dev/ttyUSB1"));
    EXPECT_EQ(2, KOVAMGR_Write(IdOf("/dev/ttyUSB1"), "ab", 2, 0, nullptr));
    EXPECT_EQ("ab", m_Machine.FarEnd("ttyUSB1").Receive(2));
}

TEST_P(NeighbourPort, SurvivesAReplugWhoseRemovalWasNotSeen) {
    m_Machine.Plug(Other());
    Start({"/dev/ttyUSB1"});
    const int before = IdOf("/dev/ttyUSB1");
    m_Machine.Vanish(Other());
    m_Machine.Plug(Other());
    EXPECT_TRUE(WaitUntil([&] {
        const int now = IdOf("/dev/ttyUSB1");
        return now != before && now != -1;
    }));
    ExpectSurvivalWith(kOther);
}

TEST_P(NeighbourPort, SurvivesAnotherDeviceOnTheSameNode) {
    m_Machine.Plug(Other());
    Start({"/dev/ttyUSB1"});
    m_Machine.Pull(Other());
    m_Machine.Plug(Ftdi("1-1.4", "C", "ttyUSB1"));
    ExpectSurvivalWith("FTDI FT232R C(/dev/ttyUSB1)");
}

TEST_P(NeighbourPort, SurvivesAModeSwitch) {
    const MockDevice normal = MockDevice::Usb("1-1.4")
                                  .Id("12d1", "1001")
                                  .Texts("Acme", "Modem", "")
                                  .Port("ttyUSB1", 0, "option")
                                  .Port("ttyUSB2", 1, "option")
                                  .Port("ttyUSB3", 2, "option");
    const MockDevice update = MockDevice::Usb("1-1.4")
                                  .Id("12d1", "14fe")
                                  .Texts("Acme", "Loader", "")
                                  .Port("ttyUSB1", 0, "option");
    m_Machine.Plug(normal);
    Start({"/dev/ttyUSB1", "/dev/ttyUSB3"});
    m_Machine.Pull(normal);
    m_Machine.Plug(update);
    ExpectSurvivalWith("Acme Loader @1-1.4(/dev/ttyUSB1)");
    m_Machine.Pull(update);
    m_Machine.Plug(normal);
    ExpectSurvivalWith("Acme Modem @1-1.4(/dev/ttyUSB1 /dev/ttyUSB2 /dev/ttyUSB3)");
}

TEST_P(NeighbourPort, SurvivesASecondTwinOfItsOwnDevice) {
    const MockDevice twin = Ftdi("1-1.5", "N", "ttyUSB1");
    Start({});
    m_Machine.Plug(twin);
    ExpectSurvivalWith("FTDI FT232R N @1-1.5(/dev/ttyUSB1)");
    m_Machine.Pull(twin);
    ExpectSurvivalWith("");
}

TEST_P(NeighbourPort, SurvivesABurst) {
    Start({});
    for (int i = 0; i < 3; ++i) {
        m_Machine.Plug(Quad());
        ExpectSurvivalWith(kQuad);
        Open(IdOf("/dev/ttyUSB6"));
        m_Machine.Pull(Quad());
        ExpectSurvivalWith("");
    }
}

TEST_P(NeighbourPort, SurvivesThePortsOfADeviceGoingOneByOne) {
    m_Machine.Plug(Quad());
    Start({"/dev/ttyUSB4", "/dev/ttyUSB7"});
    m_Machine.PullPort(Quad(), "ttyUSB4");
    ExpectSurvivalWith("FTDI Quad Q(/dev/ttyUSB5 /dev/ttyUSB6 /dev/ttyUSB7)");
    m_Machine.PullPort(Quad(), "ttyUSB7");
    ExpectSurvivalWith("FTDI Quad Q(/dev/ttyUSB5 /dev/ttyUSB6)");
    m_Machine.PullPort(Quad(), "ttyUSB5");
    m_Machine.PullPort(Quad(), "ttyUSB6");
    ExpectSurvivalWith("");
}

TEST_P(NeighbourPort, SurvivesEventsThatWereLost) {
    m_Machine.Plug(Other());
    Start({"/dev/ttyUSB1"});
    m_Machine.Vanish(Other());
    m_Machine.Appear(Ftdi("1-1.4", "C", "ttyUSB1"));
    m_Machine.Initialize(Ftdi("1-1.4", "C", "ttyUSB1").PortAt("ttyUSB1"));
    m_Machine.FailMonitors(ENOBUFS);
    ExpectSurvivalWith("FTDI FT232R C(/dev/ttyUSB1)");
}

TEST_P(NeighbourPort, SurvivesLateFactsAndAddsOfWhatIsGone) {
    Start({});
    m_Machine.KernelSaysBarely("add", Quad(), "ttyUSB5");
    m_Machine.KernelSaysBarely("add", Other(), "ttyUSB1");
    m_Machine.Appear(Other());
    m_Machine.UdevSays("add", Other());
    if (!m_Machine.HasUdevd()) {
        m_Machine.KernelSays("add", Other());
    }
    ExpectSurvivalWith(kOther);
}

TEST_P(NeighbourPort, SurvivesEmptyAttributesAtARemoval) {
    m_Machine.Plug(Other());
    Start({"/dev/ttyUSB1"});
    for (const char* const name : {"idVendor", "idProduct", "manufacturer", "product", "serial"}) {
        m_Machine.SetAttribute(Other().Device(), name, "");
    }
    m_Machine.KernelSaysBarely("remove", Other(), "ttyUSB1");
    m_Machine.Vanish(Other());
    ExpectSurvivalWith("");
}

TEST_P(NeighbourPort, SurvivesManyReplugs) {
    m_Machine.Plug(Other());
    Start({});
    for (int i = 0; i < 20; ++i) {
        m_Machine.Pull(Other());
        m_Machine.Plug(Other());
        KOVAMGR_Open(IdOf("/dev/ttyUSB1")); // some come too early
    }
    ExpectSurvivalWith(kOther);
}

TEST_P(NeighbourPort, SurvivesAnEventBetweenTheScanAndTheRegistration) {
    // The manager registers first and enumerates within its initialisation.
    m_Machine.Appear(Other());
    m_Machine.KernelSays("add", Other());
    Start({});
    m_Machine.UdevSays("add", Other());
    ExpectSurvivalWith(kOther);
}
