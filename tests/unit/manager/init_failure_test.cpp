// SPDX-License-Identifier: MIT
#include <pthread.h>

#include <filesystem>
#include <future>
#include <stdexcept>
#include <utility>

#include "tests/unit/manager/manager_test.h"
#include "tests/unit/manager/unresolved.h"

namespace {

class ManagerInitFailure : public ManagerTest {
  protected:
    bool IsThreadRunning() { return ManagerProbe::ReadThreadObject(m_Manager).IsRunning(); }

    // Whether another thread gets the port lock.
    bool IsLockFree() {
        return std::async(std::launch::async, [this] {
                   return m_Manager.GetPortState(1);
               }).wait_for(std::chrono::seconds(10)) == std::future_status::ready;
    }
};

class IncompleteAdapter : public ManagerTest, public testing::WithParamInterface<Operation> {};

// While it lives, threads are to have a stack that no machine has.
class NoThreads {
  public:
    NoThreads() {
        pthread_attr_t attributes;
        pthread_attr_init(&attributes);
        pthread_attr_getstacksize(&attributes, &m_nBefore);
        Set(attributes, size_t{1} << 46);
    }
    ~NoThreads() {
        pthread_attr_t attributes;
        pthread_attr_init(&attributes);
        Set(attributes, m_nBefore);
    }
    NoThreads(const NoThreads&) = delete;
    NoThreads& operator=(const NoThreads&) = delete;

  private:
    static void Set(pthread_attr_t& attributes, size_t size) {
        pthread_attr_setstacksize(&attributes, size);
        EXPECT_EQ(pthread_setattr_default_np(&attributes), 0);
        pthread_attr_destroy(&attributes);
    }

    size_t m_nBefore = 0;
};

} // namespace

TEST_F(ManagerInitFailure, WithoutAnAdapterIsOneLineAndNothingElse) {
    std::filesystem::remove("libOSAdapt.so");
    EXPECT_EQ(m_Manager.Init(), 20002);
    EXPECT_EQ(NewLog(), Info("Load OSAdapte.dll fail"));
    EXPECT_EQ(ManagerProbe::IsInit(m_Manager), 0);
    EXPECT_FALSE(IsThreadRunning());
    EXPECT_EQ(m_Manager.Release(), 20003);
}

INSTANTIATE_TEST_SUITE_P(EachOfTheSeven, IncompleteAdapter, testing::ValuesIn(Operations()),
                         OperationName);

TEST_P(IncompleteAdapter, FailsToInitialiseWithOneLine) {
    m_Scratch.UseAdapter("lacks_" + GetParam().symbol);
    EXPECT_EQ(m_Manager.Init(), 20002);
    EXPECT_EQ(NewLog(), Info("Load OSAdapte.dll fail"));
    EXPECT_EQ(ManagerProbe::IsInit(m_Manager), 0);
    EXPECT_EQ(m_Manager.Release(), 20003);
}

TEST_F(ManagerInitFailure, AReadThreadThatDoesNotStartLeavesTheFirstScanBehind) {
    FakeDevices().Device("Modem").Port("COM1").Apply(*m_Fake);
    {
        NoThreads noThreads;
        EXPECT_EQ(m_Manager.Init(), 20009);
    }
    EXPECT_EQ(m_Fake->Journal(), (Lines{"Enum 4"})) << "not registered";
    EXPECT_EQ(ManagerProbe::IsInit(m_Manager), 1);
    EXPECT_EQ(ManagerProbe::ReadThreadRun(m_Manager), 0);
    EXPECT_FALSE(IsThreadRunning());
    EXPECT_EQ(PortLines(), (Lines{"COM1 = 1"}));
    EXPECT_TRUE(IsLockFree());
}

TEST_F(ManagerInitFailure, AReadThreadThatDidNotStartIsReleasedAllTheSame) {
    {
        NoThreads noThreads;
        ASSERT_EQ(m_Manager.Init(), 20009);
    }
    NewLog();
    EXPECT_EQ(m_Manager.Release(), 20000);
    EXPECT_EQ(NewLog(),
              Info("ENTER CKOVASMgrPort::Release()") + Info("LEAVE CKOVASMgrPort::Release()"));
    EXPECT_EQ(m_Fake->Journal(), (Lines{"Enum 4", "UnRegister"}));
}

TEST_F(ManagerInitFailure, ARefusedRegistrationLeavesThreadAndScanBehind) {
    FakeDevices().Device("Modem").Port("COM1").Apply(*m_Fake);
    m_Fake->SetResult(FakeCall::kRegister, OS_ADAPT_FAILED);
    EXPECT_EQ(m_Manager.Init(), 20002);
    EXPECT_EQ(m_Fake->Journal(), (Lines{"Enum 4", "Register = 30001"}));
    EXPECT_EQ(ManagerProbe::IsInit(m_Manager), 1);
    EXPECT_EQ(ManagerProbe::ReadThreadRun(m_Manager), 1);
    EXPECT_TRUE(IsThreadRunning());
    EXPECT_EQ(PortLines(), (Lines{"COM1 = 1"}));
    EXPECT_TRUE(IsLockFree());
    EXPECT_EQ(m_Manager.Release(), 20000);
    EXPECT_FALSE(IsThreadRunning());
}

TEST_F(ManagerInitFailure, AnyResultOfARegistrationBut30000IsARefusal) {
    for (const int result : {0, 1, -1, 20000, 29999, 30001}) {
        m_Fake->SetResult(FakeCall::kRegister, result);
        EXPECT_EQ(m_Manager.Init(), 20002) << result;
        ASSERT_EQ(m_Manager.Release(), 20000);
        Free(std::exchange(ManagerProbe::OSAdaptLib(m_Manager), nullptr));
    }
}

TEST_F(ManagerInitFailure, AnAdapterThatThrowsLeavesThePortLockFree) {
    for (const FakeCall call : {FakeCall::kEnum, FakeCall::kRegister}) {
        m_Fake->SetHook(call, [] { throw std::runtime_error("broken"); });
        EXPECT_THROW(m_Manager.Init(), std::runtime_error);
        EXPECT_TRUE(IsLockFree());
        m_Fake->SetHook(call, {});
        ASSERT_EQ(m_Manager.Release(), 20000);
        Free(std::exchange(ManagerProbe::OSAdaptLib(m_Manager), nullptr));
    }
}
