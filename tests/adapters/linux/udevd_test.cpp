// SPDX-License-Identifier: MIT
//
// Where udevd runs: a port counts when it has udevd's word, which comes late and in any order.
#include <chrono>

#include "tests/adapters/linux/linux_bench.h"
#include "tests/adapters/linux/sample_devices.h"
#include "tests/harness/wait_until.h"

using std::chrono::milliseconds;
using std::chrono::seconds;

namespace {

class Udevd : public LoadedBench {
  protected:
    Udevd() : LoadedBench("udev") { m_Machine.Plug(Neighbour()); }

    bool NothingIsToldFor(milliseconds time) const {
        const size_t count = m_Recorder.Notices().size();
        return !WaitUntil([&] { return m_Recorder.Notices().size() != count; }, time);
    }
};

} // namespace

TEST_F(Udevd, APortThatIsNotInitializedWaitsForItsWord) {
    Start();
    m_Machine.Appear(Other());
    m_Machine.KernelSays("add", Other());
    EXPECT_TRUE(NothingIsToldFor(milliseconds(200)));
    m_Machine.UdevSays("add", Other());
    ExpectNotices({Told("+", kNeighbour, kOther)});
}

TEST_F(Udevd, APortThatTheFirstScanFindsUninitializedWaitsForItsWord) {
    m_Machine.Appear(Other());
    m_Machine.KernelSays("add", Other());
    Start();
    EXPECT_EQ(kNeighbour, Devices());
    m_Machine.UdevSays("add", Other());
    ExpectNotices({Told("+", kNeighbour, kOther)});
}

TEST_F(Udevd, WithoutItsWordAPortIsTakenAfterThreeSeconds) {
    Start();
    const auto start = std::chrono::steady_clock::now();
    m_Machine.Appear(Other());
    m_Machine.KernelSays("add", Other());
    ASSERT_TRUE(m_Recorder.WaitForCount(1));
    EXPECT_GE(std::chrono::steady_clock::now() - start, milliseconds(2900));
    EXPECT_EQ(Told("+", kNeighbour, kOther), m_Recorder.Notices().at(0));
}

TEST_F(Udevd, ItsWorkersMayFinishInAnyOrder) {
    Start();
    m_Machine.Appear(Quad());
    m_Machine.KernelSays("add", Quad());
    for (const char* const port : {"ttyUSB6", "ttyUSB4", "ttyUSB7", "ttyUSB5"}) {
        m_Machine.UdevSays("add", Quad(), port);
    }
    ExpectNotices({Told("+", kNeighbour, kQuad)});
}

TEST_F(Udevd, PortsThatAreAnnouncedAreWaitedForALittle) {
    Start();
    std::string first;
    // On a busy machine the gap may be too long, but not each time.
    for (int i = 0; i < 5 && first != Told("+", kNeighbour, kQuad); ++i) {
        const size_t before = m_Recorder.Notices().size();
        m_Machine.Appear(Quad());
        m_Machine.KernelSays("add", Quad());
        m_Machine.UdevSays("add", Quad(), "ttyUSB6");
        NothingIsToldFor(milliseconds(15)); // more than the quiet that ends a notice
        m_Machine.UdevSays("add", Quad());
        ASSERT_TRUE(m_Recorder.WaitForCount(before + 1));
        first = m_Recorder.Notices().at(before);
        m_Machine.Pull(Quad());
        ASSERT_TRUE(
            WaitUntil([this] { return m_Recorder.Notices().back() == Told("-", kNeighbour); }));
    }
    EXPECT_EQ(Told("+", kNeighbour, kQuad), first);
}

TEST_F(Udevd, PortsWhoseWordComesMuchLaterAreToldApart) {
    Start();
    m_Machine.Appear(Quad());
    m_Machine.KernelSays("add", Quad());
    m_Machine.UdevSays("add", Quad(), "ttyUSB5");
    m_Machine.UdevSays("add", Quad(), "ttyUSB7");
    ASSERT_TRUE(m_Recorder.WaitForCount(1));
    m_Machine.UdevSays("add", Quad(), "ttyUSB4");
    m_Machine.UdevSays("add", Quad(), "ttyUSB6");
    ExpectNotices({Told("+", kNeighbour, "FTDI Quad Q(/dev/ttyUSB5 /dev/ttyUSB7)"),
                   Told("+", kNeighbour, kQuad)});
}

TEST_F(Udevd, ARemovalIsToldWithoutItsWord) {
    m_Machine.Plug(Other());
    Start();
    m_Machine.Vanish(Other());
    m_Machine.KernelSays("remove", Other());
    ExpectNotices({Told("-", kNeighbour)});
}

TEST_F(Udevd, ItsLateWordOnARemovalDoesNotTakeTheNextDeviceAway) {
    m_Machine.Plug(Other());
    Start();
    m_Machine.Vanish(Other());
    m_Machine.KernelSays("remove", Other());
    const auto lateWord = m_Machine.UdevsWord("remove", Other().PortAt("ttyUSB1"));
    m_Machine.Appear(Other());
    m_Machine.KernelSays("add", Other());
    lateWord();
    m_Machine.UdevSays("add", Other());
    lateWord();
    ExpectNotices({Told("-", kNeighbour), Told("+", kNeighbour, kOther)});
}

TEST_F(Udevd, ItsLateWordOnAnArrivalDoesNotBringTheDeviceBack) {
    Start();
    m_Machine.Appear(Other());
    m_Machine.KernelSays("add", Other());
    const auto lateWord = m_Machine.UdevsWord("add", Other().PortAt("ttyUSB1"));
    m_Machine.Vanish(Other());
    m_Machine.KernelSays("remove", Other());
    lateWord();
    EXPECT_EQ(kNeighbour, Devices());
    ExpectNotices({});
}

TEST_F(Udevd, ItsLateWordOnAnArrivalDoesNotPassForTheNextDevices) {
    Start();
    m_Machine.Appear(Other());
    m_Machine.KernelSays("add", Other());
    const auto lateWord = m_Machine.UdevsWord("add", Other().PortAt("ttyUSB1"));
    m_Machine.Vanish(Other());
    m_Machine.KernelSays("remove", Other());
    m_Machine.Appear(Other());
    m_Machine.KernelSays("add", Other());
    lateWord();
    EXPECT_TRUE(NothingIsToldFor(milliseconds(200)));
    m_Machine.UdevSays("add", Other());
    ExpectNotices({Told("+", kNeighbour, kOther)});
}
