// SPDX-License-Identifier: MIT
#include "common/jthread.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <chrono>

#include "common/jmutex_guard.h"
#include "tests/unit/common/task.h"

namespace {

// A pipe into which nobody writes.
class SilentPipe {
  public:
    SilentPipe() { m_IsOpen = pipe(m_Ends) == 0; }
    ~SilentPipe() {
        close(m_Ends[0]);
        close(m_Ends[1]);
    }
    SilentPipe(const SilentPipe&) = delete;
    SilentPipe& operator=(const SilentPipe&) = delete;

    void ReadForEver() const {
        char byte = 0;
        while (m_IsOpen && read(m_Ends[0], &byte, 1) != 1) {
        }
    }

  private:
    int m_Ends[2] = {-1, -1};
    bool m_IsOpen = false;
};

// Tells that a scope was left.
class Marker {
  public:
    explicit Marker(std::atomic<bool>& isLeft) : m_IsLeft(isLeft) {}
    ~Marker() { m_IsLeft = true; }
    Marker(const Marker&) = delete;
    Marker& operator=(const Marker&) = delete;

  private:
    std::atomic<bool>& m_IsLeft;
};

TEST(KillingAThread, EndsOneThatIsBlockedInReadAndUnwindsItsStack) {
    SilentPipe silent;
    std::atomic<bool> isUnwound{false};
    Task task([&] {
        Marker marker(isUnwound);
        silent.ReadForEver();
    });
    ASSERT_EQ(task.Start(), 0);
    EXPECT_EQ(task.Kill(), 0);
    EXPECT_TRUE(isUnwound);
    EXPECT_FALSE(task.IsRunning());
}

TEST(KillingAThread, FreesWhatItsGuardsHold) {
    SilentPipe silent;
    JMutex mutex;
    mutex.Init();
    std::atomic<bool> isHeld{false};
    Task task([&] {
        JMutexGuard guard(mutex);
        isHeld = true;
        silent.ReadForEver();
    });
    ASSERT_EQ(task.Start(), 0);
    ASSERT_TRUE(WaitUntil([&] { return isHeld.load(); }));
    EXPECT_EQ(task.Kill(), 0);
    JMutexGuard guard(mutex);
}

TEST(KillingAThread, EndsOneThatWaitsForACondition) {
    JMutex mutex;
    mutex.Init();
    JCondition never;
    Task task([&] {
        JMutexGuard guard(mutex);
        for (;;) {
            never.Wait(mutex);
        }
    });
    ASSERT_EQ(task.Start(), 0);
    EXPECT_EQ(task.Kill(), 0);
    JMutexGuard guard(mutex);
}

TEST(KillingAThread, LetsItBeStartedAgain) {
    SilentPipe silent;
    std::atomic<int> runs{0};
    Task task([&] {
        if (++runs == 1) {
            silent.ReadForEver();
        }
    });
    ASSERT_EQ(task.Start(), 0);
    ASSERT_EQ(task.Kill(), 0);
    EXPECT_EQ(task.Start(), 0);
    EXPECT_TRUE(task.WaitForEnd());
    EXPECT_EQ(runs, 2);
}

TEST(KillingAThread, GivesUpOnASpinnerAfterOneSecond) {
    static std::atomic<bool> mayEnd{false};
    // Never destroyed: the thread outlives it otherwise.
    static Task& task = *new Task([] {
        while (!mayEnd) {
        }
    });
    ASSERT_EQ(task.Start(), 0);
    const auto start = std::chrono::steady_clock::now();
    EXPECT_EQ(task.Kill(), ETIMEDOUT);
    const auto waited = std::chrono::steady_clock::now() - start;
    EXPECT_GE(waited, std::chrono::milliseconds(950));
    EXPECT_LT(waited, std::chrono::seconds(5));
    EXPECT_TRUE(task.IsRunning());
    EXPECT_EQ(task.Kill(), ESRCH);
    mayEnd = true;
    EXPECT_TRUE(task.WaitForEnd());
}

TEST(KillingAThread, ThatWasNeverStartedFindsNone) {
    Task task([] {});
    EXPECT_EQ(task.Kill(), ESRCH);
}

TEST(KillingAThread, ThatHasEndedByItselfSucceeds) {
    Task task([] {});
    ASSERT_EQ(task.Start(), 0);
    ASSERT_TRUE(task.WaitForEnd());
    EXPECT_EQ(task.Kill(), 0);
    EXPECT_EQ(task.Kill(), ESRCH);
}

} // namespace
