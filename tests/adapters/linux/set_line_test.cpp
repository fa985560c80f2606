// SPDX-License-Identifier: MIT
//
// The line as a host sets it, by the function that it finds in the loaded adapter.
#include <dlfcn.h>

#include <atomic>
#include <thread>

#include "OSAdaptLine.h"
#include "tests/adapters/linux/linux_bench.h"
#include "tests/adapters/linux/sample_devices.h"
#include "tests/harness/wait_until.h"

namespace {

constexpr const char* kPort = "/dev/ttyUSB1";

class SetLine : public EitherSource {
  protected:
    SetLine() {
        m_Machine.Plug(Neighbour());
        m_Machine.Plug(Other());
    }
    ~SetLine() override { dlclose(m_Library); }

    int Set(const char* settings, const char* port = kPort) const {
        const auto function =
            reinterpret_cast<OSADAPT_SET_LINE>(dlsym(m_Library, OSADAPT_SET_LINE_NAME));
        return function == nullptr ? 0 : function(port, settings);
    }

    speed_t Speed(const std::string& port = "ttyUSB1") {
        const termios settings = m_Machine.FarEnd(port).Settings();
        return cfgetospeed(&settings);
    }

    int Open() const {
        const int handle = m_Adapter.OpenPort(kPort);
        EXPECT_GT(handle, 0) << Log();
        return handle;
    }

  private:
    void* m_Library = dlopen("libOSAdapt.so", RTLD_NOW | RTLD_NOLOAD);
};

} // namespace

KOVASMGR_EITHER_SOURCE(SetLine);

TEST_P(SetLine, AnOpenPortIsSetAtOnceAndItsNeighbourIsNot) {
    Start();
    Open();
    ASSERT_GT(m_Adapter.OpenPort("/dev/ttyUSB0"), 0);
    EXPECT_EQ(OS_ADAPT_OK, Set("9600"));
    EXPECT_EQ(speed_t{B9600}, Speed());
    EXPECT_EQ(speed_t{B115200}, Speed("ttyUSB0"));
}

TEST_P(SetLine, AClosedPortOpensWithWhatWasSetWordForWord) {
    Start();
    EXPECT_EQ(OS_ADAPT_OK, Set("9600"));
    EXPECT_EQ(OS_ADAPT_OK, Set("8n2"));
    Open();
    EXPECT_EQ(speed_t{B9600}, Speed());
    EXPECT_NE(0U, m_Machine.FarEnd("ttyUSB1").Settings().c_cflag & CSTOPB);
}

TEST_P(SetLine, NullAndAnEmptyTextGoBackToWhatIsConfigured) {
    setenv("OSADAPT_LINE", "19200", 1);
    Start();
    for (const char* const nothing : {static_cast<const char*>(nullptr), ""}) {
        EXPECT_EQ(OS_ADAPT_OK, Set("9600"));
        const int handle = Open();
        EXPECT_EQ(speed_t{B9600}, Speed());
        EXPECT_EQ(OS_ADAPT_OK, Set(nothing));
        EXPECT_EQ(speed_t{B19200}, Speed());
        m_Adapter.Close(handle);
        m_Adapter.Close(Open());
    }
}

TEST_P(SetLine, WhatCannotBeDoneChangesNothing) {
    Start();
    EXPECT_EQ(OS_ADAPT_FAILED, Set("9600", nullptr));
    EXPECT_EQ(OS_ADAPT_FAILED, Set("9600", "/dev/ttyUSB7"));
    EXPECT_EQ(OS_ADAPT_FAILED, Set("300 9600x"));
    EXPECT_EQ(OS_ADAPT_FAILED, Set("300 break"));
    Open();
    EXPECT_EQ(OS_ADAPT_FAILED, Set("300 8e1")); // which a pseudo-terminal does not take
    EXPECT_EQ(speed_t{B115200}, Speed());
    EXPECT_EQ(1, LogLines("'/dev/ttyUSB7' cannot be set: it is not there"));
    EXPECT_EQ(1, LogLines("'/dev/ttyUSB1' cannot be set: a break needs an open port"));
    EXPECT_EQ(1, LogLines("the driver refused parity even"));
}

TEST_P(SetLine, WhatWasSetIsForgottenWhenTheDeviceGoes) {
    Start();
    EXPECT_EQ(OS_ADAPT_OK, Set("9600"));
    m_Machine.Pull(Other());
    m_Machine.Plug(Other());
    ASSERT_TRUE(WaitUntil([this] { return m_Recorder.Notices().size() >= 2; }));
    Open();
    EXPECT_EQ(speed_t{B115200}, Speed());
}

TEST_P(SetLine, ABreakHoldsUpNeitherOtherChangesNorOpenings) {
    Start();
    Open();
    std::atomic<bool> hasEnded{false};
    std::thread breaking([&] {
        Set("9600 break=5000");
        hasEnded = true;
    });
    EXPECT_TRUE(WaitUntil([this] { return Speed() == speed_t{B9600}; }));
    EXPECT_EQ(OS_ADAPT_OK, Set("300"));
    EXPECT_GT(m_Adapter.OpenPort("/dev/ttyUSB0"), 0);
    EXPECT_FALSE(hasEnded);
    m_Machine.TakeFarEnd("ttyUSB1").reset(); // hangs the line up
    breaking.join();
}

TEST_P(SetLine, ItCanBeCalledInsideANotice) {
    std::atomic<int> result{0};
    m_Recorder.OnEach([&] { result = Set("9600"); });
    Start();
    Open();
    m_Machine.Pull(Neighbour());
    ASSERT_TRUE(WaitUntil([&] { return result != 0; }));
    EXPECT_EQ(OS_ADAPT_OK, result);
    EXPECT_EQ(speed_t{B9600}, Speed());
}

TEST_P(SetLine, ThreadsThatSetOnePortTakeTurns) {
    Start();
    Open();
    std::thread other([this] {
        for (int i = 0; i < 50; ++i) {
            EXPECT_EQ(OS_ADAPT_OK, Set("9600 8n2"));
        }
    });
    for (int i = 0; i < 50; ++i) {
        EXPECT_EQ(OS_ADAPT_OK, Set("300 8n1"));
    }
    other.join();
    const termios settings = m_Machine.FarEnd("ttyUSB1").Settings();
    EXPECT_EQ(cfgetospeed(&settings) == B9600, (settings.c_cflag & CSTOPB) != 0);
}
