// SPDX-License-Identifier: MIT
#include "common/jthread.h"

#include <gtest/gtest.h>
#include <pthread.h>

#include <atomic>
#include <cerrno>

#include "tests/harness/process_counts.h"
#include "tests/unit/common/task.h"

namespace {

// Ends without ever telling its starter that it runs.
class SilentThread : public JThread {
  protected:
    void* Thread() override { return nullptr; }
};

// Does something before it tells.
class SlowStarter : public JThread {
  public:
    ~SlowStarter() override {
        WaitUntil([this] { return !IsRunning(); });
    }
    bool m_IsPrepared = false;

  protected:
    void* Thread() override {
        m_IsPrepared = true;
        ThreadStarted();
        return nullptr;
    }
};

class DefaultStackSize {
  public:
    explicit DefaultStackSize(std::size_t size) {
        pthread_getattr_default_np(&m_Before);
        pthread_attr_t changed;
        pthread_getattr_default_np(&changed);
        pthread_attr_setstacksize(&changed, size);
        m_IsChanged = pthread_setattr_default_np(&changed) == 0;
        pthread_attr_destroy(&changed);
    }
    ~DefaultStackSize() {
        pthread_setattr_default_np(&m_Before);
        pthread_attr_destroy(&m_Before);
    }
    DefaultStackSize(const DefaultStackSize&) = delete;
    DefaultStackSize& operator=(const DefaultStackSize&) = delete;
    bool IsChanged() const { return m_IsChanged; }

  private:
    pthread_attr_t m_Before{};
    bool m_IsChanged = false;
};

TEST(Thread, IsNotRunningBeforeItsStart) {
    Task task([] {});
    EXPECT_FALSE(task.IsRunning());
}

TEST(Thread, StartWaitsUntilTheThreadHasStarted) {
    SlowStarter starter;
    ASSERT_EQ(starter.Start(), 0);
    EXPECT_TRUE(starter.m_IsPrepared);
}

TEST(Thread, StartDoesNotWaitForOneThatEndsWithoutAWord) {
    SilentThread thread;
    EXPECT_EQ(thread.Start(), 0);
    EXPECT_TRUE(WaitUntil([&] { return !thread.IsRunning(); }));
}

TEST(Thread, RunsUntilItsFunctionIsLeft) {
    std::atomic<bool> mayEnd{false};
    Task task([&] { WaitUntil([&] { return mayEnd.load(); }); });
    ASSERT_EQ(task.Start(), 0);
    EXPECT_TRUE(task.IsRunning());
    mayEnd = true;
    EXPECT_TRUE(task.WaitForEnd());
}

TEST(Thread, IsNotStartedASecondTimeWhileItRuns) {
    std::atomic<bool> mayEnd{false};
    Task task([&] { WaitUntil([&] { return mayEnd.load(); }); });
    ASSERT_EQ(task.Start(), 0);
    EXPECT_EQ(task.Start(), EBUSY);
    mayEnd = true;
}

TEST(Thread, CanBeStartedAgainAfterItsEnd) {
    std::atomic<int> runs{0};
    Task task([&] { ++runs; });
    for (int run = 1; run <= 3; ++run) {
        ASSERT_EQ(task.Start(), 0);
        ASSERT_TRUE(task.WaitForEnd());
        EXPECT_EQ(runs, run);
    }
}

TEST(Thread, JoinLeavesNothingOfItBehind) {
    const std::size_t before = RunningThreads();
    Task task([] {});
    ASSERT_EQ(task.Start(), 0);
    ASSERT_TRUE(task.WaitForEnd());
    task.Join();
    // The kernel counts a joined thread out a moment later.
    EXPECT_TRUE(WaitUntil([&] { return RunningThreads() <= before; }));
    task.Join();
}

TEST(Thread, DestructionLeavesNothingOfItBehind) {
    const std::size_t before = RunningThreads();
    {
        Task task([] {});
        ASSERT_EQ(task.Start(), 0);
    }
    EXPECT_TRUE(WaitUntil([&] { return RunningThreads() <= before; }));
}

TEST(Thread, JoinDoesNothingWhileItRuns) {
    std::atomic<bool> mayEnd{false};
    Task task([&] { WaitUntil([&] { return mayEnd.load(); }); });
    ASSERT_EQ(task.Start(), 0);
    task.Join();
    EXPECT_TRUE(task.IsRunning());
    mayEnd = true;
}

TEST(Thread, StartTellsThatTheSystemHasNoThread) {
    Task task([] {});
    {
        DefaultStackSize tooMuch(std::size_t{1} << 46);
        if (!tooMuch.IsChanged()) {
            GTEST_SKIP() << "the default stack size cannot be changed here";
        }
        EXPECT_EQ(task.Start(), EAGAIN);
        EXPECT_FALSE(task.IsRunning());
        EXPECT_EQ(task.Kill(), ESRCH);
    }
    EXPECT_EQ(task.Start(), 0);
}

} // namespace
