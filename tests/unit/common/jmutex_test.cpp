// SPDX-License-Identifier: MIT
#include "common/jmutex.h"

#include <gtest/gtest.h>

#include <atomic>
#include <cerrno>
#include <stdexcept>
#include <thread>

#include "common/jmutex_guard.h"
#include "tests/harness/wait_until.h"

namespace {

// Unpaired on purpose, so out of the compiler's analysis.
int Lock(JMutex& mutex) KOVASMGR_NO_THREAD_SAFETY_ANALYSIS { return mutex.Lock(); }
int Unlock(JMutex& mutex) KOVASMGR_NO_THREAD_SAFETY_ANALYSIS { return mutex.Unlock(); }

// A thread that locks, tells so, and unlocks.
class Contender {
  public:
    explicit Contender(JMutex& mutex)
        : m_Thread([this, &mutex] {
              m_Result = Lock(mutex);
              m_HasLocked = true;
              Unlock(mutex);
          }) {}
    ~Contender() { m_Thread.join(); }
    Contender(const Contender&) = delete;
    Contender& operator=(const Contender&) = delete;

    bool GetsIn() {
        return WaitUntil([this] { return m_HasLocked.load(); }) && m_Result == 0;
    }
    bool IsKeptOut() {
        return !WaitUntil([this] { return m_HasLocked.load(); }, std::chrono::milliseconds(50));
    }

  private:
    std::atomic<int> m_Result{-1};
    std::atomic<bool> m_HasLocked{false};
    std::thread m_Thread;
};

class Mutex : public testing::Test {
  protected:
    Mutex() { m_Mutex.Init(); }
    JMutex m_Mutex;
};

TEST_F(Mutex, KeepsOthersOutUntilEveryLockOfTheOwnerIsUndone) {
    ASSERT_EQ(Lock(m_Mutex), 0);
    ASSERT_EQ(Lock(m_Mutex), 0);
    Contender contender(m_Mutex);
    EXPECT_TRUE(contender.IsKeptOut());
    EXPECT_EQ(Unlock(m_Mutex), 0);
    EXPECT_TRUE(contender.IsKeptOut());
    EXPECT_EQ(Unlock(m_Mutex), 0);
    EXPECT_TRUE(contender.GetsIn());
}

TEST_F(Mutex, IsHandedOnWhenItsOwnerDies) {
    std::thread([this] { Lock(m_Mutex); }).join();
    EXPECT_EQ(Lock(m_Mutex), 0);
    EXPECT_EQ(Unlock(m_Mutex), 0);
    EXPECT_TRUE(Contender(m_Mutex).GetsIn());
}

TEST_F(Mutex, IsHandedOnWhenItsOwnerDiesHoldingItTwice) {
    std::thread([this] {
        Lock(m_Mutex);
        Lock(m_Mutex);
    }).join();
    EXPECT_EQ(Lock(m_Mutex), 0);
    EXPECT_EQ(Unlock(m_Mutex), 0);
    EXPECT_TRUE(Contender(m_Mutex).GetsIn());
}

TEST_F(Mutex, IsHandedToAThreadThatAlreadyWaits) {
    std::atomic<bool> isHeld{false};
    std::atomic<bool> mayDie{false};
    std::thread owner([&] {
        Lock(m_Mutex);
        isHeld = true;
        WaitUntil([&] { return mayDie.load(); });
    });
    ASSERT_TRUE(WaitUntil([&] { return isHeld.load(); }));
    Contender contender(m_Mutex);
    EXPECT_TRUE(contender.IsKeptOut());
    mayDie = true;
    EXPECT_TRUE(contender.GetsIn());
    owner.join();
}

TEST(MutexBeforeInit, IsNeitherLockedNorUnlocked) {
    JMutex mutex;
    EXPECT_EQ(Lock(mutex), EINVAL);
    EXPECT_EQ(Unlock(mutex), EINVAL);
}

TEST_F(Mutex, MayBeInitialisedAgainWhileHeld) {
    ASSERT_EQ(Lock(m_Mutex), 0);
    EXPECT_EQ(m_Mutex.Init(), 0);
    Contender contender(m_Mutex);
    EXPECT_TRUE(contender.IsKeptOut());
    EXPECT_EQ(Unlock(m_Mutex), 0);
    EXPECT_TRUE(contender.GetsIn());
}

TEST_F(Mutex, GuardHoldsItForItsScope) {
    { JMutexGuard guard(m_Mutex); }
    EXPECT_TRUE(Contender(m_Mutex).GetsIn());
}

TEST_F(Mutex, GuardLetsGoWhenAnExceptionPasses) {
    const auto failing = [this] {
        JMutexGuard outer(m_Mutex);
        throw std::runtime_error("passing");
    };
    EXPECT_THROW(failing(), std::runtime_error);
    EXPECT_TRUE(Contender(m_Mutex).GetsIn());
}

} // namespace
