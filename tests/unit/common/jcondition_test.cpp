// SPDX-License-Identifier: MIT
#include "common/jcondition.h"

#include <gtest/gtest.h>

#include <atomic>
#include <thread>

#include "common/jmutex_guard.h"
#include "tests/harness/wait_until.h"

namespace {

// Unpaired on purpose, so out of the compiler's analysis.
int Lock(JMutex& mutex) KOVASMGR_NO_THREAD_SAFETY_ANALYSIS { return mutex.Lock(); }
int Unlock(JMutex& mutex) KOVASMGR_NO_THREAD_SAFETY_ANALYSIS { return mutex.Unlock(); }

long NanosecondsBetween(const timespec& early, const timespec& late) {
    return (late.tv_sec - early.tv_sec) * 1000000000 + late.tv_nsec - early.tv_nsec;
}

class Condition : public testing::Test {
  protected:
    Condition() { m_Mutex.Init(); }

    // Wakes whoever waits, and dies with the mutex locked.
    void DieHoldingTheMutex() {
        std::thread([this] {
            Lock(m_Mutex);
            m_IsDue = true;
            m_Condition.NotifyAll();
        }).join();
    }

    JMutex m_Mutex;
    JCondition m_Condition;
    std::atomic<bool> m_IsWaiting{false};
    std::atomic<bool> m_IsDue{false};
};

TEST_F(Condition, AWaitTakesTheMutexOverFromAnOwnerThatDied) {
    std::thread waiter([this] {
        JMutexGuard guard(m_Mutex);
        m_IsWaiting = true;
        while (!m_IsDue) {
            m_Condition.Wait(m_Mutex);
        }
    });
    EXPECT_TRUE(WaitUntil([this] { return m_IsWaiting.load(); }));
    DieHoldingTheMutex();
    waiter.join();
    EXPECT_EQ(Lock(m_Mutex), 0) << "the waiter has left it usable";
    EXPECT_EQ(Unlock(m_Mutex), 0);
}

TEST_F(Condition, ABoundedWaitTakesTheMutexOverAsWell) {
    const timespec late = JCondition::After(60000);
    std::thread waiter([this, &late] {
        JMutexGuard guard(m_Mutex);
        m_IsWaiting = true;
        while (!m_IsDue && m_Condition.WaitUntil(m_Mutex, late)) {
        }
    });
    EXPECT_TRUE(WaitUntil([this] { return m_IsWaiting.load(); }));
    DieHoldingTheMutex();
    waiter.join();
    EXPECT_EQ(Lock(m_Mutex), 0) << "the waiter has left it usable";
    EXPECT_EQ(Unlock(m_Mutex), 0);
}

TEST_F(Condition, ABoundedWaitEndsWhenNobodyNotifies) {
    JMutexGuard guard(m_Mutex);
    const timespec soon = JCondition::After(20);
    while (m_Condition.WaitUntil(m_Mutex, soon)) {
    }
    EXPECT_GE(NanosecondsBetween(soon, JCondition::After(0)), 0);
}

// Any part of a second may be over when it is asked for.
TEST(Instant, LiesAheadAsFarAsItIsAskedFor) {
    for (long milliseconds = 0; milliseconds < 3000; milliseconds += 7) {
        const timespec before = JCondition::After(0);
        const timespec instant = JCondition::After(milliseconds);
        const timespec after = JCondition::After(0);
        EXPECT_LT(instant.tv_nsec, 1000000000);
        EXPECT_GE(NanosecondsBetween(before, instant), milliseconds * 1000000);
        EXPECT_LE(NanosecondsBetween(after, instant), milliseconds * 1000000);
    }
}

} // namespace
