// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <thread>

#include "manager/jthread_t.h"
#include "tests/harness/wait_until.h"

namespace {

class Owner {
  public:
    virtual ~Owner() = default;
    int Run() {
        m_Thread = std::this_thread::get_id();
        WaitUntil([this] { return m_bMayEnd.load(); });
        return ++m_nRuns;
    }
    virtual int RunVirtual() { return ++m_nRuns; }

    std::atomic<bool> m_bMayEnd{true};
    std::atomic<int> m_nRuns{0};
    std::thread::id m_Thread; // read when the thread has ended
};

using Thread = JThreadT<Owner, int>;

class DerivedOwner : public Owner {
  public:
    int RunVirtual() override { return m_nRuns += 100; }
};

} // namespace

TEST(OwnerThread, RunsTheMemberFunctionOfItsOwner) {
    Owner owner;
    Thread thread;
    thread.SetTask(&owner, &Owner::Run);
    EXPECT_EQ(thread.Start(), 0);
    EXPECT_TRUE(thread.Stop());
    EXPECT_EQ(owner.m_nRuns, 1);
    EXPECT_NE(owner.m_Thread, std::this_thread::get_id());
}

TEST(OwnerThread, RunsAVirtualMemberFunction) {
    DerivedOwner owner;
    Thread thread;
    thread.SetTask(&owner, &Owner::RunVirtual);
    EXPECT_EQ(thread.Start(), 0);
    EXPECT_TRUE(thread.Stop());
    EXPECT_EQ(owner.m_nRuns, 100);
}

TEST(OwnerThread, WithoutAnOwnerEndsAtOnce) {
    Thread thread;
    thread.SetTask(nullptr, &Owner::Run);
    EXPECT_EQ(thread.Start(), 0);
    EXPECT_TRUE(WaitUntil([&] { return !thread.IsRunning(); }));
}

TEST(OwnerThread, WithoutATaskEndsAtOnce) {
    Thread thread;
    EXPECT_EQ(thread.Start(), 0);
    EXPECT_TRUE(WaitUntil([&] { return !thread.IsRunning(); }));
}

TEST(OwnerThread, StartReturnsWhileTheMemberFunctionRuns) {
    Owner owner;
    owner.m_bMayEnd = false;
    Thread thread;
    thread.SetTask(&owner, &Owner::Run);
    EXPECT_EQ(thread.Start(), 0);
    EXPECT_TRUE(thread.IsRunning());
    EXPECT_EQ(owner.m_nRuns, 0);
    owner.m_bMayEnd = true;
}

TEST(OwnerThread, StoppingOneThatNeverStartedDoesNothing) {
    Thread thread;
    EXPECT_TRUE(thread.Stop());
    EXPECT_FALSE(thread.IsRunning());
}

TEST(OwnerThread, ItsDestructorWaitsForTheEnd) {
    Owner owner;
    owner.m_bMayEnd = false;
    std::thread ender;
    {
        Thread thread;
        thread.SetTask(&owner, &Owner::Run);
        ASSERT_EQ(thread.Start(), 0);
        ender = std::thread([&] {
            WaitUntil([] { return false; }, std::chrono::milliseconds(200));
            owner.m_bMayEnd = true;
        });
    }
    EXPECT_EQ(owner.m_nRuns, 1);
    ender.join();
}

TEST(OwnerThread, StartsAgainWhenItHasEnded) {
    Owner owner;
    Thread thread;
    thread.SetTask(&owner, &Owner::Run);
    for (int run = 1; run <= 3; ++run) {
        EXPECT_EQ(thread.Start(), 0);
        EXPECT_TRUE(thread.Stop());
        EXPECT_EQ(owner.m_nRuns, run);
    }
}
