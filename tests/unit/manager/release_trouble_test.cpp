// SPDX-License-Identifier: MIT
//
// Releases in the middle of which something goes wrong.
#include <pthread.h>

#include <new>
#include <stdexcept>
#include <utility>

#include "tests/unit/manager/manager_test.h"

namespace {

class ReleaseTrouble : public ManagerTest {
  protected:
    void OpenTwoPorts() {
        InitWith(FakeDevices().Device("Modem").Port("COM1").Port("COM2"));
        ASSERT_EQ(m_Manager.Open(1), 20000);
        ASSERT_EQ(m_Manager.Open(2), 20000);
        NewLog();
        m_Fake->ClearJournal();
    }
};

} // namespace

TEST_F(ReleaseTrouble, AnAdapterThatThrowsWhenItClosesIsUnregisteredFromAllTheSame) {
    OpenTwoPorts();
    m_Fake->SetHook(FakeCall::kClose, [] { throw std::bad_alloc(); });
    EXPECT_EQ(m_Manager.Release(), 20000);
    EXPECT_EQ(m_Fake->Calls(FakeCall::kClose), 2) << "each port was tried once";
    EXPECT_FALSE(m_Fake->IsRegistered());
    EXPECT_TRUE(Ports().empty());
    const std::string log = NewLog();
    EXPECT_EQ(CountOf(log, "] ERRO:"), 2);
    EXPECT_EQ(CountOf(log, Info("LEAVE CKOVASMgrPort::Release()")), 1);
}

TEST_F(ReleaseTrouble, AnAdapterThatThrowsWhenItUnregistersIsLeftAllTheSame) {
    OpenTwoPorts();
    ASSERT_EQ(m_Manager.RegisterDeviceStateProcessCallback(OnState<1>), 20000);
    m_Fake->SetHook(FakeCall::kUnRegister, [] { throw std::runtime_error("trouble"); });
    EXPECT_EQ(m_Manager.Release(), 20000);
    EXPECT_TRUE(ManagerProbe::DevStateCallbacks(m_Manager).empty());
    EXPECT_EQ(CKOVASMgrPort::ProcessDeviceState(OS_ADAPT_DEVICE_INSERT), -1);
}

// As a cancellation does, and for the same reason: the thread is to end, not the process.
TEST_F(ReleaseTrouble, AThreadThatTheAdapterEndsLeavesNoLockBehind) {
    OpenTwoPorts();
    m_Fake->SetHook(FakeCall::kClose, [] { pthread_exit(nullptr); });
    pthread_t thread{};
    const auto release = [](void* manager) -> void* {
        ADD_FAILURE() << "it returns with " << static_cast<CKOVASMgrPort*>(manager)->Release();
        return nullptr;
    };
    ASSERT_EQ(pthread_create(&thread, nullptr, release, &m_Manager), 0);
    ASSERT_EQ(pthread_join(thread, nullptr), 0);
    EXPECT_EQ(Ports().size(), 2u) << "the lock is free, and the release went no further";
    EXPECT_EQ(m_Manager.GetPortState(1), 20053);
    EXPECT_EQ(CountOf(NewLog(), "] ERRO:"), 0);
}

TEST_F(ReleaseTrouble, APortThatVanishesWhileTheReleaseWaitsIsClosed) {
    OpenTwoPorts();
    ManagerProbe::IsInit(m_Manager) = 0; // as the release has it while it waits for the read thread
    FakeDevices().Apply(*m_Fake);
    m_Manager.DetermineSubtractPort();
    EXPECT_EQ(m_Fake->Journal(), (Lines{"Enum 4", "Close 1", "Close 2"}));
    ManagerProbe::IsInit(m_Manager) = 1;
}

TEST_F(ReleaseTrouble, ARescanOfAManagerWhoseAdapterIsNotLoadedReachesNoEarlierAdapter) {
    InitWith(FakeDevices().Device("Modem").Port("COM1"));
    ASSERT_EQ(m_Manager.Release(), 20000);
    NewLog();
    m_Fake->ClearJournal();
    JLibrary* const library = std::exchange(ManagerProbe::OSAdaptLib(m_Manager), nullptr);
    m_Manager.DetermineAddPort();
    m_Manager.DetermineSubtractPort();
    ManagerProbe::OSAdaptLib(m_Manager) = library;
    EXPECT_TRUE(m_Fake->Journal().empty());
    EXPECT_EQ(CountOf(NewLog(), Info("Getting interface of OS_ADAPT_EnumDevicePortInfo failed.")),
              2);
}
