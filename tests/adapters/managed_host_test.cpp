// SPDX-License-Identifier: MIT
#include <algorithm>
#include <atomic>
#include <filesystem>
#include <memory>
#include <mutex>
#include <thread>

#include "KOVASMgr.h"
#include "tests/adapters/adapter_under_test.h"
#include "tests/adapters/far_program.h"
#include "tests/adapters/virtual_bench.h"
#include "tests/harness/process_counts.h"
#include "tests/harness/wait_until.h"

namespace {

std::mutex s_Mutex;
std::string s_Received;           // guarded by s_Mutex
std::atomic<int> s_Insertions{0}; // notices
std::atomic<int> s_PullOuts{0};

void OnData(void* data, int length) {
    const std::lock_guard<std::mutex> lock(s_Mutex);
    s_Received.append(static_cast<const char*>(data), static_cast<size_t>(length));
}

void OnState(_KOVAMGR_DEV_STATE_TYPE_ state) {
    ++(state == KOVAMGR_DEVICE_INSERT ? s_Insertions : s_PullOuts);
}

size_t ReceivedCount() {
    const std::lock_guard<std::mutex> lock(s_Mutex);
    return s_Received.size();
}

bool WaitForText(const std::string& text) {
    return WaitUntil([&] {
        const std::lock_guard<std::mutex> lock(s_Mutex);
        return s_Received.find(text) != std::string::npos;
    });
}

// A pattern that shows lost, doubled and swapped bytes.
std::string Pattern(size_t size) {
    std::string bytes(size, '\0');
    uint32_t state = 1;
    for (char& byte : bytes) {
        state = state * 1664525U + 1013904223U;
        byte = static_cast<char>(state >> 24);
    }
    return bytes;
}

class ManagedHost : public VirtualBench {
  protected:
    ManagedHost() {
        std::filesystem::create_symlink(KOVASMGR_VIRTUAL_ADAPTER, "libOSAdapt.so");
        UseScenario(R"(
[[device]]
name = "mine"
[[device.port]]
name = "mine-0"

[[device]]
name = "other"
mode = "normal"
[[device.port]]
name = "other-0"
mode = "normal"
[[device.port]]
name = "other-1"
mode = "normal"
[[device.port]]
name = "other-update"
mode = "update"
)");
    }
    ~ManagedHost() override { KOVAMGR_Release(); }

    void Init() const {
        ASSERT_EQ(KOVAMGR_OK, KOVAMGR_Init(m_Scratch.LogDirectory().c_str()));
        ASSERT_EQ(KOVAMGR_OK, KOVAMGR_RegisterDeviceStateProcessCallback(OnState));
    }

    static void OpenAndListen(int port) {
        ASSERT_GE(port, 0);
        ASSERT_EQ(KOVAMGR_OK, KOVAMGR_RegisterCommDataReadCallback(OnData, port));
        ASSERT_EQ(KOVAMGR_OK, KOVAMGR_Open(port));
    }

    // -1 when no port has this name.
    static int IdOf(const std::string& name) {
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

    // After the command, mine-0 still is the same open port and passes bytes both ways.
    void ExpectNeighbourSurvives(const std::vector<std::string>& commands) const {
        Init();
        const int mine = IdOf("mine-0");
        OpenAndListen(mine);
        OpenAndListen(IdOf("other-0"));
        const FarProgram far(PortLink("mine-0"));
        for (const std::string& command : commands) {
            ASSERT_EQ("ok", Command(command));
            EXPECT_EQ(mine, IdOf("mine-0"));
            EXPECT_EQ(2, KOVAMGR_Write(mine, "to", 2, 0, nullptr));
            EXPECT_EQ("to", far.Receive(2));
            ASSERT_TRUE(far.Send("after " + command));
            EXPECT_TRUE(WaitForText("after " + command));
        }
    }
};

} // namespace

TEST_F(ManagedHost, ANeighboursOpenPortSurvivesAPullAndAPlug) {
    ExpectNeighbourSurvives({"pull other", "plug other"});
    EXPECT_EQ(1, s_PullOuts);
    EXPECT_EQ(1, s_Insertions);
}

TEST_F(ManagedHost, ANeighboursOpenPortSurvivesAReplug) {
    ExpectNeighbourSurvives({"replug other", "replug other"});
    EXPECT_EQ(2, s_PullOuts);
    EXPECT_EQ(2, s_Insertions);
}

TEST_F(ManagedHost, ANeighboursOpenPortSurvivesAModeSwitch) {
    ExpectNeighbourSurvives({"switch other update", "switch other normal"});
}

TEST_F(ManagedHost, ANeighboursOpenPortSurvivesTheLossOfSinglePorts) {
    ExpectNeighbourSurvives(
        {"unplug-port other-0", "unplug-port other-1", "plug-port other-1", "plug-port other-0"});
}

TEST_F(ManagedHost, AReplugGivesItsPortsNewIdentifiersAndTheyOpen) {
    Init();
    const int before = IdOf("other-0");
    OpenAndListen(before);
    ASSERT_EQ("ok", Command("replug other"));
    const int after = IdOf("other-0");
    EXPECT_NE(before, after);
    EXPECT_NE(KOVAMGR_OK, KOVAMGR_Open(before));
    OpenAndListen(after);
    const FarProgram far(PortLink("other-0"));
    ASSERT_TRUE(far.Send("again"));
    EXPECT_TRUE(WaitForText("again"));
}

TEST_F(ManagedHost, AModeSwitchShowsTheNewPortsOnly) {
    Init();
    ASSERT_EQ("ok", Command("switch other update"));
    EXPECT_EQ(-1, IdOf("other-0"));
    EXPECT_EQ(-1, IdOf("other-1"));
    EXPECT_GE(IdOf("other-update"), 0);
}

TEST_F(ManagedHost, APortThatTheManagerForgotCanBeOpenedAgain) {
    Init();
    OpenAndListen(IdOf("other-0"));
    const size_t descriptors = OpenDescriptors();
    for (int i = 0; i < 5; ++i) {
        ASSERT_EQ("ok", Command("unplug-port other-0"));
        ASSERT_EQ("ok", Command("plug-port other-0"));
        OpenAndListen(IdOf("other-0"));
    }
    // The command's connection closes on both sides, one after the other.
    EXPECT_TRUE(WaitUntil([&] { return OpenDescriptors() == descriptors; }));
}

TEST_F(ManagedHost, APortPulledWhileOpenLogsAFewLinesAndNotAHundredASecond) {
    Init();
    const int port = IdOf("other-0");
    OpenAndListen(port);
    ASSERT_EQ("ok", Command("pull other"));
    EXPECT_EQ(-1, IdOf("other-0"));
    EXPECT_EQ(-1, KOVAMGR_Write(port, "x", 1, 0, nullptr));
    EXPECT_LE(LogLines("is gone"), 1);
}

TEST_F(ManagedHost, AMebibytePassesInBothDirectionsWithoutALostByte) {
    constexpr size_t kSize = 1024 * 1024;
    Init();
    const int port = IdOf("mine-0");
    OpenAndListen(port);
    const FarProgram far(PortLink("mine-0"));
    const std::string bytes = Pattern(kSize);
    std::string atFarEnd;
    std::thread receiver([&] { atFarEnd = far.Receive(kSize); });
    std::thread sender([&] { EXPECT_TRUE(far.Send(bytes)); });
    for (size_t sent = 0; sent < kSize;) {
        const auto rest = static_cast<long>(std::min<size_t>(kSize - sent, 16384));
        const int count = KOVAMGR_Write(port, bytes.data() + sent, rest, 0, nullptr);
        ASSERT_GE(count, 0);
        ASSERT_LE(count, rest);
        sent += static_cast<size_t>(count);
    }
    receiver.join();
    sender.join();
    EXPECT_TRUE(WaitUntil([] { return ReceivedCount() >= kSize; }, std::chrono::seconds(30)));
    EXPECT_TRUE(bytes == atFarEnd);
    const std::lock_guard<std::mutex> lock(s_Mutex);
    EXPECT_TRUE(bytes == s_Received);
}

TEST_F(ManagedHost, TwoHundredPlugsAndPullsLeaveNothingBehind) {
    Init();
    const FarProgram far(PortLink("mine-0"));
    OpenAndListen(IdOf("mine-0"));
    const size_t threads = RunningThreads();
    ControlClient client(ControlDirectory());
    size_t descriptors = 0;
    for (int i = 0; i < 200; ++i) {
        ASSERT_EQ("ok", client.Ask("pull other"));
        descriptors = descriptors == 0 ? OpenDescriptors() : descriptors;
        ASSERT_EQ(descriptors, OpenDescriptors());
        ASSERT_EQ("ok", client.Ask("plug other"));
        OpenAndListen(IdOf("other-0"));
    }
    EXPECT_EQ(200, s_PullOuts);
    EXPECT_EQ(200, s_Insertions);
    EXPECT_EQ(threads, RunningThreads());
    ASSERT_TRUE(far.Send("end"));
    EXPECT_TRUE(WaitForText("end"));
}

TEST_F(ManagedHost, AReleaseLeavesNoThreadNoDescriptorAndNoLibrary) {
    Init();
    ASSERT_EQ(KOVAMGR_OK, KOVAMGR_Release());
    const size_t threads = RunningThreads();
    const size_t descriptors = OpenDescriptors();
    for (int i = 0; i < 10; ++i) {
        Init();
        OpenAndListen(IdOf("mine-0"));
        ASSERT_EQ("ok", Command("replug other"));
        ASSERT_EQ(KOVAMGR_OK, KOVAMGR_Release());
        EXPECT_EQ(threads, RunningThreads());
        EXPECT_EQ(descriptors, OpenDescriptors());
        EXPECT_FALSE(AdapterUnderTest::IsLoaded());
    }
}

TEST_F(ManagedHost, AProposedIdentifierIsTheHosts) {
    UseScenario("[[device]]\nname = \"d\"\n[[device.port]]\nname = \"p\"\nid = 4711\n");
    Init();
    EXPECT_EQ(4711, IdOf("p"));
}

TEST_F(ManagedHost, CommandsAndOpeningsByManyThreadsDoNotCollide) {
    Init();
    const int mine = IdOf("mine-0");
    OpenAndListen(mine);
    std::atomic<bool> stop{false};
    std::thread opener([&] {
        while (!stop) {
            const int port = IdOf("other-0");
            KOVAMGR_Open(port);
            KOVAMGR_Write(port, "x", 1, 0, nullptr);
            KOVAMGR_Close(port);
        }
    });
    std::thread writer([&] {
        const FarProgram far(PortLink("mine-0"));
        while (!stop) {
            KOVAMGR_Write(mine, "y", 1, 0, nullptr);
            far.Receive(1);
        }
    });
    ControlClient client(ControlDirectory());
    for (int i = 0; i < 60; ++i) {
        EXPECT_EQ("ok", client.Ask("replug other"));
        EXPECT_EQ("ok", client.Ask("unplug-port other-0"));
        EXPECT_EQ("ok", client.Ask("plug-port other-0"));
    }
    stop = true;
    opener.join();
    writer.join();
    EXPECT_EQ(mine, IdOf("mine-0"));
}
