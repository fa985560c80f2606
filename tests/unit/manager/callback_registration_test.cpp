// SPDX-License-Identifier: MIT
#include <atomic>
#include <thread>

#include "tests/unit/manager/manager_test.h"

namespace {

using ReadCallbacks = std::vector<KOVAMGR_READ_CALLBACK>;
using StateCallbacks = std::vector<KOVAMGR_DEV_STATE_CALLBACK>;

class ReadCallbackRegistration : public ManagerTest {
  protected:
    ReadCallbacks CallbacksOf(size_t index) { return Ports().at(index).vecReadCallbacks; }
};

class StateCallbackRegistration : public ManagerTest {
  protected:
    StateCallbacks Callbacks() { return ManagerProbe::DevStateCallbacks(m_Manager); }
};

} // namespace

TEST_F(ReadCallbackRegistration, OfNullIsABadArgumentAlsoBeforeInit) {
    EXPECT_EQ(m_Manager.RegisterReadCallBack(1, nullptr), 20001);
    EXPECT_EQ(m_Manager.UnregisterReadCallBack(1, nullptr), 20001);
    InitWith(FakeDevices().Device("Modem").Port("COM1"));
    EXPECT_EQ(m_Manager.RegisterReadCallBack(1, nullptr), 20001);
    EXPECT_EQ(m_Manager.UnregisterReadCallBack(1, nullptr), 20001);
    EXPECT_EQ(CallbacksOf(0), ReadCallbacks());
}

TEST_F(ReadCallbackRegistration, BeforeInitFailsForThat) {
    EXPECT_EQ(m_Manager.RegisterReadCallBack(1, OnRead<1>), 20003);
    EXPECT_EQ(m_Manager.UnregisterReadCallBack(1, OnRead<1>), 20003);
}

TEST_F(ReadCallbackRegistration, ForAnUnknownIdentifierIsABadArgument) {
    InitWith(FakeDevices());
    EXPECT_EQ(m_Manager.RegisterReadCallBack(1, OnRead<1>), 20001) << "the list is empty";
    EXPECT_EQ(m_Manager.UnregisterReadCallBack(1, OnRead<1>), 20001);
    FakeDevices().Device("Modem").Port("COM1").Apply(*m_Fake);
    m_Manager.DetermineAddPort();
    EXPECT_EQ(m_Manager.RegisterReadCallBack(2, OnRead<1>), 20001);
    EXPECT_EQ(m_Manager.UnregisterReadCallBack(2, OnRead<1>), 20001);
}

TEST_F(ReadCallbackRegistration, AppendsToThePreparedPortOnly) {
    InitWith(FakeDevices().Device("Modem").Port("COM1").Port("COM2"));
    EXPECT_EQ(m_Manager.RegisterReadCallBack(2, OnRead<2>), 20000);
    EXPECT_EQ(m_Manager.RegisterReadCallBack(2, OnRead<1>), 20000);
    EXPECT_EQ(CallbacksOf(0), ReadCallbacks());
    EXPECT_EQ(CallbacksOf(1), (ReadCallbacks{OnRead<2>, OnRead<1>}));
    EXPECT_TRUE(Tree().at(0).vecPorts.at(1).vecReadCallbacks.empty());
}

TEST_F(ReadCallbackRegistration, TwiceSucceedsAndTheCallbackIsCalledOnceForAChunk) {
    InitWith(FakeDevices().Device("Modem").Port("COM1"));
    EXPECT_EQ(m_Manager.RegisterReadCallBack(1, OnRead<1>), 20000);
    EXPECT_EQ(m_Manager.RegisterReadCallBack(1, OnRead<2>), 20000);
    EXPECT_EQ(m_Manager.RegisterReadCallBack(1, OnRead<1>), 20000);
    m_Fake->PushData("COM1", "a");
    m_Fake->PushData("COM1", "b");
    ASSERT_EQ(m_Manager.Open(1), 20000);
    ASSERT_TRUE(WaitUntil([&] { return m_Recorder.Count() >= 4; }));
    EXPECT_EQ(m_Recorder.Told(), (Lines{"read 1: a", "read 2: a", "read 1: b", "read 2: b"}));
}

TEST_F(ReadCallbackRegistration, IsUndoneWithTheRestInItsOrder) {
    InitWith(FakeDevices().Device("Modem").Port("COM1"));
    for (const KOVAMGR_READ_CALLBACK cb : {OnRead<1>, OnRead<2>, OnRead<3>}) {
        ASSERT_EQ(m_Manager.RegisterReadCallBack(1, cb), 20000);
    }
    EXPECT_EQ(m_Manager.UnregisterReadCallBack(1, OnRead<2>), 20000);
    EXPECT_EQ(CallbacksOf(0), (ReadCallbacks{OnRead<1>, OnRead<3>}));
}

TEST_F(ReadCallbackRegistration, ThatNeverWasIsUndoneWithSuccess) {
    InitWith(FakeDevices().Device("Modem").Port("COM1").Port("COM2"));
    ASSERT_EQ(m_Manager.RegisterReadCallBack(1, OnRead<1>), 20000);
    EXPECT_EQ(m_Manager.UnregisterReadCallBack(1, OnRead<2>), 20000);
    EXPECT_EQ(m_Manager.UnregisterReadCallBack(2, OnRead<1>), 20000);
    EXPECT_EQ(CallbacksOf(0), (ReadCallbacks{OnRead<1>}));
}

TEST_F(ReadCallbackRegistration, ForASharedIdentifierGoesToTheFirstPortOfIt) {
    InitWith(FakeDevices().Device("Modem").Port("COM1", 7).Port("COM2", 7));
    ASSERT_EQ(m_Manager.RegisterReadCallBack(7, OnRead<1>), 20000);
    EXPECT_EQ(CallbacksOf(0), (ReadCallbacks{OnRead<1>}));
    EXPECT_EQ(CallbacksOf(1), ReadCallbacks());
}

TEST_F(StateCallbackRegistration, OfNullIsABadArgumentAlsoBeforeInit) {
    EXPECT_EQ(m_Manager.RegisterDeviceStateProcessCallback(nullptr), 20001);
    EXPECT_EQ(m_Manager.UnregisterDeviceStateProcessCallback(nullptr), 20001);
    InitWith(FakeDevices());
    EXPECT_EQ(m_Manager.RegisterDeviceStateProcessCallback(nullptr), 20001);
    EXPECT_EQ(m_Manager.UnregisterDeviceStateProcessCallback(nullptr), 20001);
    EXPECT_EQ(Callbacks(), StateCallbacks());
}

TEST_F(StateCallbackRegistration, BeforeInitFailsForThat) {
    EXPECT_EQ(m_Manager.RegisterDeviceStateProcessCallback(OnState<1>), 20003);
    EXPECT_EQ(Callbacks(), StateCallbacks());
}

TEST_F(StateCallbackRegistration, IsUndoneAlsoOnAnUninitialisedManager) {
    EXPECT_EQ(m_Manager.UnregisterDeviceStateProcessCallback(OnState<1>), 20000);
    ManagerProbe::DevStateCallbacks(m_Manager) = {OnState<1>, OnState<2>};
    EXPECT_EQ(m_Manager.UnregisterDeviceStateProcessCallback(OnState<1>), 20000);
    EXPECT_EQ(Callbacks(), (StateCallbacks{OnState<2>}));
}

TEST_F(StateCallbackRegistration, KeepsTheirOrderAndEachOnce) {
    InitWith(FakeDevices());
    for (const KOVAMGR_DEV_STATE_CALLBACK cb : {OnState<2>, OnState<1>, OnState<2>, OnState<3>}) {
        EXPECT_EQ(m_Manager.RegisterDeviceStateProcessCallback(cb), 20000);
    }
    EXPECT_EQ(Callbacks(), (StateCallbacks{OnState<2>, OnState<1>, OnState<3>}));
    EXPECT_EQ(m_Manager.UnregisterDeviceStateProcessCallback(OnState<1>), 20000);
    EXPECT_EQ(m_Manager.UnregisterDeviceStateProcessCallback(OnState<1>), 20000);
    EXPECT_EQ(Callbacks(), (StateCallbacks{OnState<2>, OnState<3>}));
}

TEST_F(StateCallbackRegistration, DoesNotWaitForThePortLock) {
    InitWith(FakeDevices());
    JMutexGuard lock(ManagerProbe::PortMutex(m_Manager));
    std::atomic<bool> isDone{false};
    std::thread registrar([&] {
        m_Manager.RegisterDeviceStateProcessCallback(OnState<1>);
        m_Manager.UnregisterDeviceStateProcessCallback(OnState<1>);
        isDone = true;
    });
    EXPECT_TRUE(WaitUntil([&] { return isDone.load(); }));
    registrar.join();
}
