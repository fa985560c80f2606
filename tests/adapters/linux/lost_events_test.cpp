// SPDX-License-Identifier: MIT
//
// When events have been lost the table is compared with the system.
#include <cerrno>

#include "tests/adapters/linux/linux_bench.h"
#include "tests/adapters/linux/sample_devices.h"
#include "tests/harness/wait_until.h"

namespace {

class LostEvents : public EitherSource {
  protected:
    LostEvents() { m_Machine.Plug(Neighbour()); }

    // Arrives, udevd has worked on it, and no event of all this was received.
    void AppearInitialized(const MockDevice& device) {
        m_Machine.Appear(device);
        for (const MockPort& port : device.Ports()) {
            m_Machine.Initialize(port);
        }
    }

    void Lose() { m_Machine.FailMonitors(ENOBUFS); }
};

} // namespace

KOVASMGR_EITHER_SOURCE(LostEvents);

TEST_P(LostEvents, AnArrivalIsFoundAndTheLossIsLogged) {
    Start();
    AppearInitialized(Other());
    Lose();
    ExpectNotices({Told("+", kNeighbour, kOther)});
    EXPECT_GE(LogLines("lost"), 1);
}

TEST_P(LostEvents, ARemovalIsFound) {
    m_Machine.Plug(Other());
    Start();
    m_Machine.Vanish(Other());
    Lose();
    ExpectNotices({Told("-", kNeighbour)});
}

TEST_P(LostEvents, AReplugIsFoundByItsInode) {
    m_Machine.Plug(Other());
    Start();
    m_Machine.Vanish(Other());
    AppearInitialized(Other());
    Lose();
    ExpectNotices({Told("-", kNeighbour), Told("+", kNeighbour, kOther)});
}

TEST_P(LostEvents, AnotherDeviceOnTheSameNodeIsFound) {
    m_Machine.Plug(Other());
    Start();
    m_Machine.Vanish(Other());
    AppearInitialized(Ftdi("1-1.4", "C", "ttyUSB1"));
    Lose();
    ExpectNotices({Told("-", kNeighbour), Told("+", kNeighbour, "FTDI FT232R C(/dev/ttyUSB1)")});
}

TEST_P(LostEvents, WithNothingChangedNothingIsTold) {
    Start();
    Lose();
    EXPECT_TRUE(WaitUntil([this] { return LogLines("lost") > 0; }));
    ExpectNotices({});
}

TEST_P(LostEvents, ANeighboursOpenPortGoesOn) {
    m_Machine.Plug(Other());
    Start();
    const int handle = m_Adapter.OpenPort("/dev/ttyUSB0");
    m_Machine.Vanish(Other());
    AppearInitialized(Other());
    Lose();
    ASSERT_TRUE(m_Recorder.WaitForCount(2));
    EXPECT_EQ(2, m_Adapter.WriteText(handle, "on"));
    EXPECT_EQ("on", m_Machine.FarEnd("ttyUSB0").Receive(2));
}

TEST_P(LostEvents, AMonitorThatBreaksIsReplacedByAnother) {
    Start();
    m_Machine.FailMonitors(EIO);
    ASSERT_TRUE(WaitUntil([this] { return LogLines("broke off") > 0; }));
    m_Machine.Plug(Other());
    ASSERT_TRUE(m_Recorder.WaitForCount(1));
    m_Machine.Pull(Other());
    ASSERT_TRUE(m_Recorder.WaitForCount(2));
    EXPECT_EQ((Notices{Told("+", kNeighbour, kOther), Told("-", kNeighbour)}),
              m_Recorder.Notices());
}

TEST_P(LostEvents, AnOldRemovalDoesNotTakeAwayWhatWasFoundAfterIt) {
    m_Machine.Plug(Other());
    Start();
    const auto oldRemoval = m_Machine.UdevsWord("remove", Other().PortAt("ttyUSB1"));
    m_Machine.Vanish(Other());
    m_Machine.Appear(Other());
    Lose();
    ASSERT_TRUE(m_Recorder.WaitForCount(1));
    oldRemoval();
    m_Machine.UdevSays("add", Other());
    ExpectNotices({Told("-", kNeighbour), Told("+", kNeighbour, kOther)});
}
