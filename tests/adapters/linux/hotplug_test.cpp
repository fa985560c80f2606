// SPDX-License-Identifier: MIT
//
// Devices that come and go, and what is told of it.
#include <algorithm>
#include <chrono>
#include <functional>

#include "tests/adapters/linux/linux_bench.h"
#include "tests/adapters/linux/mock_calls.h"
#include "tests/adapters/linux/sample_devices.h"
#include "tests/harness/wait_until.h"

namespace {

// With a neighbour present from the start.
class Hotplug : public EitherSource {
  protected:
    Hotplug() { m_Machine.Plug(Neighbour()); }

    // All of it happens before the adapter can tell any of it.
    void WhileANoticeRuns(const std::function<void()>& action) {
        const MockDevice first = Ftdi("3-1", "first", "ttyUSB90");
        m_Recorder.Block();
        m_Machine.Plug(first);
        ASSERT_TRUE(m_Recorder.WaitUntilInside());
        action();
        m_Recorder.LetGo();
    }
};

const char* const kFirst = "FTDI FT232R first(/dev/ttyUSB90)";

} // namespace

KOVASMGR_EITHER_SOURCE(Hotplug);

TEST_P(Hotplug, AnArrivalAndARemovalAreTold) {
    Start();
    m_Machine.Plug(Other());
    ASSERT_TRUE(m_Recorder.WaitForCount(1));
    m_Machine.Pull(Other());
    ExpectNotices({Told("+", kNeighbour, kOther), Told("-", kNeighbour)});
}

TEST_P(Hotplug, TheDevicesOfTheFirstScanAreNotAnnouncedAgain) {
    Start();
    EXPECT_EQ(kNeighbour, Devices());
    ExpectNotices({});
}

TEST_P(Hotplug, TheLastDeviceGoneMeansNone) {
    Start();
    m_Machine.Pull(Neighbour());
    ExpectNotices({"- "});
}

TEST_P(Hotplug, WhatComesBetweenTheEnumerationAndTheRegistrationIsTold) {
    EXPECT_EQ(kNeighbour, Devices());
    m_Machine.Plug(Other());
    ASSERT_EQ(OS_ADAPT_OK, m_Adapter.Register(NoticeRecorder::OnNotice));
    ExpectNotices({Told("+", kNeighbour, kOther)});
}

TEST_P(Hotplug, WhatGoesBetweenTheEnumerationAndTheRegistrationIsTold) {
    m_Machine.Plug(Other());
    EXPECT_EQ(Told("", kNeighbour, kOther), " " + Devices());
    m_Machine.Pull(Other());
    ASSERT_EQ(OS_ADAPT_OK, m_Adapter.Register(NoticeRecorder::OnNotice));
    ExpectNotices({Told("-", kNeighbour)});
}

TEST_P(Hotplug, WhatComesWhileTheScanBeginsIsFoundByItAndNotTold) {
    OnNextScan([this] { m_Machine.Plug(Other()); });
    EXPECT_EQ(Told("", kNeighbour, kOther), " " + Devices());
    ASSERT_EQ(OS_ADAPT_OK, m_Adapter.Register(NoticeRecorder::OnNotice));
    ExpectNotices({});
}

TEST_P(Hotplug, WhatComesAfterTheScanHasLookedIsTold) {
    OnNextScan(nullptr, [this] { m_Machine.Plug(Other()); });
    Start();
    WaitUntil([this] { return Devices() != kNeighbour; });
    EXPECT_EQ(Told("", kNeighbour, kOther), " " + Devices());
    EXPECT_LE(m_Recorder.Notices().size(), 1U);
}

TEST_P(Hotplug, WhatGoesAfterTheScanHasLookedDoesNotStay) {
    m_Machine.Plug(Other());
    OnNextScan(nullptr, [this] { m_Machine.Pull(Other()); });
    Start();
    EXPECT_TRUE(WaitUntil([this] { return Devices() == kNeighbour; }));
    EXPECT_LE(m_Recorder.Notices().size(), 1U);
}

TEST_P(Hotplug, AReplugIsAPullOutAndAnInsertion) {
    m_Machine.Plug(Other());
    Start();
    m_Machine.Pull(Other());
    m_Machine.Plug(Other());
    ExpectNotices({Told("-", kNeighbour), Told("+", kNeighbour, kOther)});
}

TEST_P(Hotplug, TwentyReplugsAreTold) {
    m_Machine.Plug(Other());
    Start();
    for (size_t i = 0; i < 20; ++i) {
        m_Machine.Pull(Other());
        ASSERT_TRUE(m_Recorder.WaitForCount(2 * i + 1));
        m_Machine.Plug(Other());
        ASSERT_TRUE(m_Recorder.WaitForCount(2 * i + 2));
    }
    Notices expected;
    for (int i = 0; i < 20; ++i) {
        expected.push_back(Told("-", kNeighbour));
        expected.push_back(Told("+", kNeighbour, kOther));
    }
    ExpectNotices(expected);
}

TEST_P(Hotplug, AnotherDeviceOnTheSameNodeIsAPullOutAndAnInsertion) {
    m_Machine.Plug(Other());
    Start();
    m_Machine.Pull(Other());
    m_Machine.Plug(Ftdi("1-1.4", "C", "ttyUSB1"));
    ExpectNotices({Told("-", kNeighbour), Told("+", kNeighbour, "FTDI FT232R C(/dev/ttyUSB1)")});
}

TEST_P(Hotplug, AReplugWhoseRemovalWasNotSeenIsKnownByItsInode) {
    m_Machine.Plug(Other());
    Start();
    m_Machine.Vanish(Other());
    m_Machine.Plug(Other());
    ExpectNotices({Told("-", kNeighbour), Told("+", kNeighbour, kOther)});
}

TEST_P(Hotplug, AnotherDeviceOnANodeWhoseRemovalWasNotSeenTakesItOver) {
    m_Machine.Plug(Other());
    Start();
    m_Machine.Vanish(Other());
    m_Machine.Plug(Ftdi("1-1.4", "C", "ttyUSB1"));
    ExpectNotices({Told("-", kNeighbour), Told("+", kNeighbour, "FTDI FT232R C(/dev/ttyUSB1)")});
}

TEST_P(Hotplug, AnAddForADeviceThatStayedIsNotTold) {
    Start();
    m_Machine.KernelSays("add", Neighbour());
    m_Machine.UdevSays("add", Neighbour());
    m_Machine.KernelSays("change", Neighbour());
    m_Machine.UdevSays("change", Neighbour());
    ExpectNotices({});
}

TEST_P(Hotplug, AModeSwitchIsAPullOutAndAnInsertion) {
    const auto mode = [](const std::string& product) {
        return MockDevice::Usb("1-1.4")
            .Id("12d1", product == "Modem" ? "1001" : "14fe")
            .Texts("Acme", product, "");
    };
    const MockDevice normal = mode("Modem")
                                  .Port("ttyUSB1", 0, "option")
                                  .Port("ttyUSB2", 1, "option")
                                  .Port("ttyUSB3", 2, "option");
    const MockDevice update = mode("Loader").Port("ttyUSB1", 0, "option");
    m_Machine.Plug(normal);
    Start();
    m_Machine.Pull(normal);
    m_Machine.Plug(update);
    ExpectNotices(
        {Told("-", kNeighbour), Told("+", kNeighbour, "Acme Loader @1-1.4(/dev/ttyUSB1)")});
}

TEST_P(Hotplug, ASecondTwinDoesNotRenameTheFirst) {
    Start();
    m_Machine.Plug(Ftdi("1-1.2", "N", "ttyUSB1"));
    ExpectNotices({Told("+", kNeighbour, "FTDI FT232R N @1-1.2(/dev/ttyUSB1)")});
}

TEST_P(Hotplug, ATwinKeepsItsNameWhenTheFirstGoes) {
    const std::string twin = "FTDI FT232R N @1-1.2(/dev/ttyUSB1)";
    m_Machine.Plug(Ftdi("1-1.2", "N", "ttyUSB1"));
    Start();
    m_Machine.Pull(Neighbour());
    ASSERT_TRUE(m_Recorder.WaitForCount(1));
    m_Machine.Plug(Neighbour());
    ExpectNotices({Told("-", twin), Told("+", twin, kNeighbour)});
}

TEST_P(Hotplug, TwinsWithoutSerialNumbersHaveTheirPlaceFromTheStart) {
    Start();
    const auto twin = [](const std::string& place, const std::string& port) {
        return MockDevice::Usb(place)
            .Id("1a86", "7523")
            .Texts("", "CH340", "")
            .Port(port, 0, "ch341-uart");
    };
    m_Machine.Plug(twin("1-1.5", "ttyUSB1"));
    ASSERT_TRUE(m_Recorder.WaitForCount(1));
    m_Machine.Plug(twin("1-1.4", "ttyUSB2"));
    ExpectNotices(
        {Told("+", kNeighbour, "CH340 @1-1.5(/dev/ttyUSB1)"),
         Told("+", kNeighbour, "CH340 @1-1.5(/dev/ttyUSB1)", "CH340 @1-1.4(/dev/ttyUSB2)")});
}

TEST_P(Hotplug, TheFourPortsOfADeviceAreOneNotice) {
    Start();
    const auto noticesOf = [this](const std::function<void()>& event, const std::string& told) {
        const size_t before = m_Recorder.Notices().size();
        event();
        EXPECT_TRUE(WaitUntil([&] { return m_Recorder.Notices().back() == told; }));
        return m_Recorder.Notices().size() - before;
    };
    // On a busy machine it may be more; never to succeed would be chance no longer.
    size_t least = 8;
    m_Machine.Plug(Other());
    ASSERT_TRUE(m_Recorder.WaitForCount(1));
    for (int i = 0; i < 5; ++i) {
        const size_t plug =
            noticesOf([this] { m_Machine.Plug(Quad()); }, Told("+", kNeighbour, kOther, kQuad));
        const size_t pull =
            noticesOf([this] { m_Machine.Pull(Quad()); }, Told("-", kNeighbour, kOther));
        least = std::min(least, plug + pull);
    }
    EXPECT_EQ(2U, least);
}

TEST_P(Hotplug, ManyDevicesThatComeTogetherAreToldTogether) {
    Start();
    for (int i = 1; i <= 16; ++i) {
        m_Machine.Appear(
            Ftdi("2-" + std::to_string(i), std::to_string(i), "ttyUSB" + std::to_string(i)));
    }
    for (int i = 1; i <= 16; ++i) {
        const MockDevice device =
            Ftdi("2-" + std::to_string(i), std::to_string(i), "ttyUSB" + std::to_string(i));
        m_Machine.KernelSays("add", device);
        m_Machine.UdevSays("add", device);
    }
    WaitUntil([this] { return m_Adapter.Devices()->nDeviceCount == 17; });
    EXPECT_LT(m_Recorder.Notices().size(), 12U); // one on a machine that has nothing else to do
    EXPECT_NE(std::string::npos, Devices().find("FTDI FT232R 16(/dev/ttyUSB16)")) << Devices();
}

TEST_P(Hotplug, OnePortOfADeviceComesAndGoesAlone) {
    m_Machine.Plug(Quad());
    Start();
    m_Machine.PullPort(Quad(), "ttyUSB5");
    ASSERT_TRUE(m_Recorder.WaitForCount(1));
    m_Machine.PlugPort(Quad(), "ttyUSB5");
    ExpectNotices({Told("-", kNeighbour, "FTDI Quad Q(/dev/ttyUSB4 /dev/ttyUSB6 /dev/ttyUSB7)"),
                   Told("+", kNeighbour, kQuad)});
}

TEST_P(Hotplug, FactsThatComeLateAreWaitedFor) {
    const MockDevice bare = MockDevice::Usb("1-1.2")
                                .Id("", "")
                                .Texts("FTDI", "FT232R USB UART", "B")
                                .Port("ttyUSB1", 0, "ftdi_sio");
    Start();
    m_Machine.KernelSaysBarely("add", Other(), "ttyUSB1");
    m_Machine.Appear(bare);
    m_Machine.KernelSaysBarely("add", Other(), "ttyUSB1");
    m_Machine.UdevSays("add", Other());
    EXPECT_FALSE(WaitUntil([this] { return !m_Recorder.Notices().empty(); },
                           std::chrono::milliseconds(100)));
    m_Machine.SetAttribute(Other().Device(), "idProduct", "6001");
    m_Machine.SetAttribute(Other().Device(), "idVendor", "0403");
    ExpectNotices({Told("+", kNeighbour, kOther)});
}

TEST_P(Hotplug, AnAddOfADeviceThatIsGoneAlreadyIsNotTold) {
    Start();
    m_Machine.KernelSaysBarely("add", Other(), "ttyUSB1");
    m_Machine.KernelSaysBarely("remove", Other(), "ttyUSB1");
    m_Machine.KernelSaysBarely("add", Quad(), "ttyUSB5"); // its removal never comes
    m_Machine.UdevSays("add", Other());
    EXPECT_EQ(kNeighbour, Devices());
    ExpectNotices({});
}

TEST_P(Hotplug, AtTheRemovalNothingIsReadFromTheDevice) {
    m_Machine.Plug(Other());
    Start();
    for (const char* const name : {"idVendor", "idProduct", "manufacturer", "product", "serial"}) {
        m_Machine.SetAttribute(Other().Device(), name, "");
    }
    m_Machine.KernelSaysBarely("remove", Other(), "ttyUSB1");
    m_Machine.UdevSays("remove", Other());
    m_Machine.Vanish(Other());
    ExpectNotices({Told("-", kNeighbour)});
}

TEST_P(Hotplug, AReplugInOneBatchIsServedStepByStep) {
    m_Machine.Plug(Other());
    Start();
    WhileANoticeRuns([this] {
        m_Machine.Pull(Other());
        m_Machine.Plug(Other());
    });
    ExpectNotices({Told("+", kNeighbour, kOther, kFirst), Told("-", kNeighbour, kFirst),
                   Told("+", kNeighbour, kFirst, kOther)});
}

TEST_P(Hotplug, AnotherDeviceOnANodeInOneBatchIsServedStepByStep) {
    m_Machine.Plug(Other());
    Start();
    WhileANoticeRuns([this] {
        m_Machine.Pull(Other());
        m_Machine.Plug(Ftdi("1-1.4", "C", "ttyUSB1"));
    });
    ExpectNotices({Told("+", kNeighbour, kOther, kFirst), Told("-", kNeighbour, kFirst),
                   Told("+", kNeighbour, kFirst, "FTDI FT232R C(/dev/ttyUSB1)")});
}

TEST_P(Hotplug, WhatDoesNotFitComesInWhenThereIsRoom) {
    const auto device = [](int i) {
        return Ftdi("2-" + std::to_string(i), std::to_string(1000 + i),
                    "ttyUSB" + std::to_string(i));
    };
    for (int i = 1; i < 64; ++i) {
        m_Machine.Plug(device(i));
    }
    Start();
    ASSERT_EQ(64, m_Adapter.Devices()->nDeviceCount);
    m_Machine.Plug(device(64));
    EXPECT_TRUE(WaitUntil([this] { return LogLines("1064") > 0; }));
    m_Machine.Pull(device(1));
    EXPECT_TRUE(WaitUntil([this] {
        const auto list = m_Adapter.Devices();
        return list->nDeviceCount == 64 &&
               std::string(list->stDevice[63].szDeviceName) == "FTDI FT232R 1064";
    }));
    EXPECT_STREQ("FTDI FT232R N", m_Adapter.Devices()->stDevice[0].szDeviceName);
}
