// SPDX-License-Identifier: MIT
//
// Every exported function, called from inside each kind of callback. What single calls lead to is
// told in tests/api; here each returns what it should, and callbacks, notices and the release go on
// as before.
#include <algorithm>
#include <atomic>
#include <thread>

#include "tests/api/host_test.h"
#include "tests/harness/capture_stdout.h"
#include "tests/harness/figures.h"
#include "tests/proof/callbacks/inside_calls.h"

namespace {

class InsideCallback : public HostTest, public testing::WithParamInterface<InsideCall> {
  protected:
    void TearDown() override {
        if (!HasFailure()) {
            NoteFigure("callbacks.inside_calls", 1);
        }
    }

    void Start() {
        InitWith(FakeDevices().Device("Modem").Port("COM1").Port("COM2"));
        for (const KOVAMGR_READ_CALLBACK cb : {OnRead<1>, OnRead<2>}) {
            ASSERT_EQ(KOVAMGR_RegisterCommDataReadCallback(cb, 1), KOVAMGR_OK);
        }
        for (const KOVAMGR_DEV_STATE_CALLBACK cb : {OnState<1>, OnState<2>}) {
            ASSERT_EQ(KOVAMGR_RegisterDeviceStateProcessCallback(cb), KOVAMGR_OK);
        }
        ASSERT_EQ(KOVAMGR_Open(1), KOVAMGR_OK);
    }

    void PlugInAnother() {
        const CaptureStdout output;
        FakeDevices().Device("Modem").Port("COM1").Port("COM2").Device("Other").Port("COM3").Apply(
            *m_Fake);
        EXPECT_TRUE(m_Fake->NotifyOnThread(OS_ADAPT_DEVICE_INSERT));
    }

    void PullOutTheOther() {
        const CaptureStdout output;
        FakeDevices().Device("Modem").Port("COM1").Port("COM2").Apply(*m_Fake);
        EXPECT_TRUE(m_Fake->NotifyOnThread(OS_ADAPT_DEVICE_PULLOUT));
    }

    // Makes the call in the first run of this callback.
    void CallIn(const std::string& callback) {
        m_Recorder.During(callback, [this] {
            if (!m_HasCalled) {
                m_Result = GetParam().call();
                m_HasCalled = true;
            }
        });
    }

    void ExpectResult() {
        EXPECT_TRUE(WaitUntil([this] { return m_HasCalled.load(); }));
        EXPECT_EQ(m_Result, GetParam().expected);
    }

    // Port 1 may be closed by now, and a callback gone.
    void ExpectThatEverythingGoesOn() {
        CaptureStdout output;
        ASSERT_EQ(KOVAMGR_Open(1), KOVAMGR_OK);
        ASSERT_EQ(KOVAMGR_RegisterCommDataReadCallback(OnRead<4>, 1), KOVAMGR_OK);
        m_Fake->PushData("COM1", "after");
        EXPECT_TRUE(WaitUntil([this] { return WasTold("read 4: after"); }));
        ASSERT_EQ(KOVAMGR_RegisterDeviceStateProcessCallback(OnState<4>), KOVAMGR_OK);
        EXPECT_TRUE(m_Fake->NotifyOnThread(6));
        EXPECT_TRUE(WasTold("state 4: 20206"));
        EXPECT_EQ(KOVAMGR_Release(), KOVAMGR_OK);
        EXPECT_EQ(KOVAMGR_Open(1), KOVAMGR_ERR_NOT_INIT);
        EXPECT_EQ(m_Fake->OpenHandles(), 0U);
        EXPECT_EQ(Init(), KOVAMGR_OK);
    }

    bool WasTold(const std::string& line) const {
        const Lines told = m_Recorder.Told();
        return std::find(told.begin(), told.end(), line) != told.end();
    }

  private:
    std::atomic<bool> m_HasCalled{false};
    std::atomic<int> m_Result{0};
};

std::string NameOfParameter(const testing::TestParamInfo<InsideCall>& info) {
    return info.param.name;
}

} // namespace

TEST_P(InsideCallback, OfDataACallReturnsWhatItShouldAndEverythingGoesOn) {
    Start();
    CallIn("read 1");
    m_Fake->PushData("COM1", "data");
    ExpectResult();
    ExpectThatEverythingGoesOn();
}

TEST_P(InsideCallback, OfANoticeACallReturnsWhatItShouldAndEverythingGoesOn) {
    Start();
    CallIn("state 1");
    EXPECT_TRUE(m_Fake->NotifyOnThread(5));
    ExpectResult();
    ExpectThatEverythingGoesOn();
}

TEST_P(InsideCallback, OfAnInsertionACallReturnsWhatItShouldAndEverythingGoesOn) {
    Start();
    CallIn("state 1");
    PlugInAnother();
    ExpectResult();
    ExpectThatEverythingGoesOn();
}

TEST_P(InsideCallback, OfAPullOutACallReturnsWhatItShouldAndEverythingGoesOn) {
    Start();
    PlugInAnother();
    CallIn("state 1");
    PullOutTheOther();
    ExpectResult();
    ExpectThatEverythingGoesOn();
}

INSTANTIATE_TEST_SUITE_P(EveryFunction, InsideCallback, testing::ValuesIn(InsideCalls()),
                         NameOfParameter);

TEST(InsideCalls, AreMadeFromBothKindsOfCallback) { EXPECT_GE(InsideCalls().size(), 30U); }

namespace {

class StateRegistrationInsideAReadCallback : public HostTest {
  protected:
    // Makes the call in a read callback while a notice is under way on another thread.
    // @return whether it had returned before the notice was let go on
    bool ReturnsDuringANotice(int (*call)()) {
        InitWith(FakeDevices().Device("Modem").Port("COM1"));
        std::atomic<bool> isLetGo{false};
        std::atomic<bool> isInside{false};
        std::atomic<bool> isCalling{false};
        std::atomic<bool> hasReturned{false};
        m_Recorder.During("state 1", [&] {
            isInside = true;
            WaitUntil([&] { return isLetGo.load(); });
        });
        m_Recorder.During("read 1", [&] {
            isCalling = true;
            EXPECT_EQ(call(), KOVAMGR_OK);
            hasReturned = true;
        });
        KOVAMGR_RegisterDeviceStateProcessCallback(OnState<1>);
        KOVAMGR_RegisterCommDataReadCallback(OnRead<1>, 1);
        KOVAMGR_Open(1);
        std::thread notifier([this] { m_Fake->Notify(5); });
        EXPECT_TRUE(WaitUntil([&] { return isInside.load(); }));
        m_Fake->PushData("COM1", "data");
        EXPECT_TRUE(WaitUntil([&] { return isCalling.load(); }));
        const bool result =
            WaitUntil([&] { return hasReturned.load(); }, std::chrono::milliseconds(100));
        isLetGo = true;
        notifier.join();
        EXPECT_TRUE(WaitUntil([&] { return hasReturned.load(); }));
        KOVAMGR_Release();
        return result;
    }
};

} // namespace

// With the port lock held: a notice whose callback calls the library would wait for ever, which is
// why hosts are told not to.
TEST_F(StateRegistrationInsideAReadCallback, WaitsForTheNoticeUnderWay) {
    EXPECT_FALSE(ReturnsDuringANotice(
        [] { return KOVAMGR_RegisterDeviceStateProcessCallback(OnState<2>); }));
}

TEST_F(StateRegistrationInsideAReadCallback, WaitsForTheNoticeUnderWayAlsoWhenItRemovesOne) {
    EXPECT_FALSE(ReturnsDuringANotice(
        [] { return KOVAMGR_UnRegisterDeviceStateProcessCallback(OnState<1>); }));
}
