// SPDX-License-Identifier: MIT
//
// Bytes through a port from its enumeration to its end, and what becomes of it when its device goes.
#include <filesystem>
#include <memory>
#include <system_error>

#include "tests/adapters/linux/linux_bench.h"
#include "tests/adapters/linux/mock_calls.h"
#include "tests/adapters/linux/sample_devices.h"
#include "tests/harness/wait_until.h"

namespace fs = std::filesystem;

namespace {

class OpenMockedPort : public EitherSource {
  protected:
    OpenMockedPort() {
        m_Machine.Plug(Neighbour());
        m_Machine.Plug(Other());
    }

    // 1 for success, 0 for a failure, -1 for a failure that is no failure.
    int ReadOnce(int handle, std::string& bytes) const {
        char buffer[64];
        long count = -2;
        if (m_Adapter.Read(handle, buffer, sizeof buffer, &count) != OS_ADAPT_OK) {
            return 0;
        }
        bytes.append(buffer, static_cast<size_t>(count));
        return 1;
    }

    // Near ends. (The preloaded library keeps descriptors of its own, also of openings that failed.)
    static size_t OpenTerminals() {
        size_t count = 0;
        for (const auto& entry : fs::directory_iterator("/proc/self/fd")) {
            std::error_code ignored;
            const std::string target = fs::read_symlink(entry, ignored);
            count += target.compare(0, 9, "/dev/pts/") == 0 ? 1 : 0;
        }
        return count;
    }

    void ExpectBytesPass(int handle, const std::string& port) {
        ASSERT_GT(handle, 0) << Log();
        EXPECT_EQ(5, m_Adapter.WriteText(handle, "to it"));
        EXPECT_EQ("to it", m_Machine.FarEnd(port).Receive(5));
        ASSERT_TRUE(m_Machine.FarEnd(port).Send("from it"));
        EXPECT_EQ("from it", m_Adapter.ReadUntil(handle, "from it"));
    }
};

} // namespace

KOVASMGR_EITHER_SOURCE(OpenMockedPort);

TEST_P(OpenMockedPort, BytesPassBothWays) {
    Start();
    const int handle = m_Adapter.OpenPort("/dev/ttyUSB1");
    ExpectBytesPass(handle, "ttyUSB1");
    EXPECT_EQ(OS_ADAPT_OK, m_Adapter.Close(handle));
}

TEST_P(OpenMockedPort, EveryByteValuePasses) {
    Start();
    const int handle = m_Adapter.OpenPort("/dev/ttyUSB1");
    std::string bytes;
    for (int i = 0; i < 256; ++i) {
        bytes += static_cast<char>(i);
    }
    EXPECT_EQ(256, m_Adapter.WriteText(handle, bytes));
    EXPECT_EQ(bytes, m_Machine.FarEnd("ttyUSB1").Receive(256));
    ASSERT_TRUE(m_Machine.FarEnd("ttyUSB1").Send(bytes + "end"));
    EXPECT_EQ(bytes + "end", m_Adapter.ReadUntil(handle, "end"));
}

TEST_P(OpenMockedPort, ANodeThatIsNotReportedIsNotOpened) {
    Start();
    EXPECT_EQ(OS_ADAPT_NO_HANDLE, m_Adapter.OpenPort("/dev/ttyUSB9"));
    EXPECT_EQ(OS_ADAPT_NO_HANDLE, m_Adapter.OpenPort("/dev/ptmx"));
    EXPECT_EQ(OS_ADAPT_NO_HANDLE, m_Adapter.OpenPort("ttyUSB1"));
    EXPECT_EQ(OS_ADAPT_NO_HANDLE, m_Adapter.OpenPort(""));
}

TEST_P(OpenMockedPort, APortPulledWhileOpenFailsOneReadAndItsWritesAtOnce) {
    Start();
    const int handle = m_Adapter.OpenPort("/dev/ttyUSB1");
    ASSERT_GT(handle, 0);
    m_Machine.Pull(Other());
    ASSERT_TRUE(m_Recorder.WaitForCount(1));
    std::string bytes;
    int failures = 0;
    for (int i = 0; i < 100; ++i) {
        failures += 1 - ReadOnce(handle, bytes);
    }
    EXPECT_LE(failures, 1);
    EXPECT_EQ("", bytes);
    EXPECT_EQ(-1, m_Adapter.WriteText(handle, "x"));
    EXPECT_EQ(OS_ADAPT_NO_HANDLE, m_Adapter.OpenPort("/dev/ttyUSB1"));
    EXPECT_EQ(OS_ADAPT_OK, m_Adapter.Close(handle));
}

TEST_P(OpenMockedPort, AfterAReplugThePortIsOpenedAnewAndTheOldHandleStaysDead) {
    Start();
    const int before = m_Adapter.OpenPort("/dev/ttyUSB1");
    m_Machine.Pull(Other());
    m_Machine.Plug(Other());
    ASSERT_TRUE(m_Recorder.WaitForCount(2));
    const int after = m_Adapter.OpenPort("/dev/ttyUSB1");
    EXPECT_NE(before, after);
    ExpectBytesPass(after, "ttyUSB1");
    EXPECT_EQ(-1, m_Adapter.WriteText(before, "x"));
}

TEST_P(OpenMockedPort, TheDescriptorOfAPulledPortIsClosedAtOnce) {
    Start();
    ASSERT_GT(m_Adapter.OpenPort("/dev/ttyUSB1"), 0);
    EXPECT_EQ(1U, OpenTerminals());
    m_Machine.Pull(Other());
    EXPECT_TRUE(WaitUntil([] { return OpenTerminals() == 0; }));
}

TEST_P(OpenMockedPort, ADeviceThatGoesBeforeItsNodeIsOpenedFailsTheOpening) {
    Start();
    OnNextOpen("/dev/ttyUSB1", [this] { m_Machine.Pull(Other()); });
    EXPECT_EQ(OS_ADAPT_NO_HANDLE, m_Adapter.OpenPort("/dev/ttyUSB1"));
    EXPECT_EQ(0U, OpenTerminals());
    ASSERT_TRUE(m_Recorder.WaitForCount(1));
    EXPECT_EQ(Told("-", kNeighbour), m_Recorder.Notices().at(0));
}

TEST_P(OpenMockedPort, ADeviceThatGoesAfterItsNodeIsOpenedLeavesNoDescriptor) {
    Start();
    OnNextOpen("/dev/ttyUSB1", nullptr, [this] {
        m_Machine.Pull(Other());
        m_Recorder.WaitForCount(1);
    });
    EXPECT_EQ(OS_ADAPT_NO_HANDLE, m_Adapter.OpenPort("/dev/ttyUSB1"));
    EXPECT_EQ(0U, OpenTerminals());
}

// The descriptor works to the end: only a second look at the table shows that it is too late.
TEST_P(OpenMockedPort, ADeviceThatGoesUnnoticedWhileItsNodeIsOpenedLeavesNoDescriptor) {
    Start();
    std::unique_ptr<MockTerminal> farEnd;
    OnNextOpen("/dev/ttyUSB1", nullptr, [&] {
        farEnd = m_Machine.TakeFarEnd("ttyUSB1");
        m_Machine.Pull(Other());
        m_Recorder.WaitForCount(1);
    });
    EXPECT_EQ(OS_ADAPT_NO_HANDLE, m_Adapter.OpenPort("/dev/ttyUSB1"));
    EXPECT_EQ(0U, OpenTerminals());
}

TEST_P(OpenMockedPort, ADeviceThatIsReplacedWhileItsNodeIsOpenedIsNotTheOneThatOpens) {
    Start();
    std::unique_ptr<MockTerminal> farEnd;
    OnNextOpen("/dev/ttyUSB1", nullptr, [&] {
        farEnd = m_Machine.TakeFarEnd("ttyUSB1");
        m_Machine.Pull(Other());
        m_Machine.Plug(Ftdi("1-1.4", "C", "ttyUSB1"));
        m_Recorder.WaitForCount(2);
    });
    EXPECT_EQ(OS_ADAPT_NO_HANDLE, m_Adapter.OpenPort("/dev/ttyUSB1"));
    EXPECT_EQ(0U, OpenTerminals());
    ExpectBytesPass(m_Adapter.OpenPort("/dev/ttyUSB1"), "ttyUSB1");
}

TEST_P(OpenMockedPort, ANeighboursPortGoesOnWhileOthersComeAndGo) {
    Start();
    const int handle = m_Adapter.OpenPort("/dev/ttyUSB0");
    for (size_t i = 0; i < 10; ++i) {
        m_Machine.Pull(Other());
        m_Machine.Plug(Other());
        ASSERT_TRUE(m_Recorder.WaitForCount(2 * i + 2));
        ExpectBytesPass(handle, "ttyUSB0");
    }
}
