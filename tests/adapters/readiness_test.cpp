// SPDX-License-Identifier: MIT
#include "adapters/shared/readiness.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <atomic>
#include <ctime>
#include <thread>
#include <utility>

#include "tests/adapters/descriptors_used_up.h"
#include "tests/adapters/watched_descriptors.h"
#include "tests/harness/process_counts.h"
#include "tests/harness/wait_until.h"

namespace {

// A line that carries bytes one way.
struct Line {
    Line() {
        int ends[2] = {-1, -1};
        if (pipe2(ends, O_CLOEXEC | O_NONBLOCK) == 0) {
            near = UniqueFd(ends[0]);
            far = UniqueFd(ends[1]);
        }
    }

    void Send() const { ASSERT_EQ(1, write(far.Get(), "x", 1)); }

    void Drain() const {
        char buffer[64];
        while (read(near.Get(), buffer, sizeof buffer) > 0) {
        }
    }

    UniqueFd near;
    UniqueFd far;
};

class ReadinessTest : public testing::Test {
  protected:
    void Watch(int handle, const Line& line) { m_Readiness.Watch(handle, line.near.Get()); }

    // By asking until the answer is new.
    bool IsIdleNow(int handle) {
        m_Readiness.IsIdle(handle);
        return m_Readiness.IsIdle(handle);
    }

    static void LetTheClockTick() {
        const auto now = [] {
            timespec time{};
            clock_gettime(CLOCK_MONOTONIC_COARSE, &time);
            return std::make_pair(time.tv_sec, time.tv_nsec);
        };
        const auto before = now();
        ASSERT_TRUE(WaitUntil([&] { return now() != before; }));
    }

    Line m_First;
    Line m_Second;
    Readiness m_Readiness;
};

} // namespace

TEST_F(ReadinessTest, ADescriptorIsIdleWhileThereIsNothingToRead) {
    Watch(1, m_First);
    EXPECT_TRUE(IsIdleNow(1));
    m_First.Send();
    EXPECT_FALSE(IsIdleNow(1));
    EXPECT_FALSE(IsIdleNow(1)); // also what nobody has fetched yet
    m_First.Drain();
    EXPECT_TRUE(IsIdleNow(1));
}

TEST_F(ReadinessTest, OnlyTheOneWithDataIsNotIdle) {
    Watch(1, m_First);
    Watch(2, m_Second);
    m_Second.Send();
    EXPECT_TRUE(IsIdleNow(1));
    EXPECT_FALSE(m_Readiness.IsIdle(2));
}

TEST_F(ReadinessTest, AllAreToldWhenAllHaveData) {
    Line lines[40];
    for (int i = 0; i < 40; ++i) {
        Watch(i + 1, lines[i]);
        lines[i].Send();
    }
    for (int round = 0; round < 3; ++round) {
        for (int handle = 1; handle <= 40; ++handle) {
            ASSERT_FALSE(m_Readiness.IsIdle(handle)) << handle;
        }
    }
}

TEST_F(ReadinessTest, AHangUpIsSomethingToRead) {
    Watch(1, m_First);
    ASSERT_TRUE(IsIdleNow(1));
    m_First.far.Reset();
    EXPECT_FALSE(IsIdleNow(1));
}

TEST_F(ReadinessTest, AnErrorIsSomethingToRead) {
    m_Readiness.Watch(1, m_First.far.Get());
    ASSERT_TRUE(IsIdleNow(1));
    m_First.near.Reset();
    EXPECT_FALSE(IsIdleNow(1));
}

// The machine may be so slow that an answer grows old: then it is tried again.
TEST_F(ReadinessTest, OneAnswerServesEachDescriptorOnce) {
    Watch(1, m_First);
    Watch(2, m_Second);
    EXPECT_TRUE(WaitUntil([&] {
        m_Second.Drain();
        IsIdleNow(1);
        m_Second.Send();
        return m_Readiness.IsIdle(2) && !m_Readiness.IsIdle(2);
    }));
}

TEST_F(ReadinessTest, AnAnswerOlderThanATickOfTheClockIsNotUsed) {
    Watch(1, m_First);
    Watch(2, m_Second);
    for (int i = 0; i < 10; ++i) {
        m_Second.Drain();
        IsIdleNow(1);
        m_Second.Send();
        LetTheClockTick();
        ASSERT_FALSE(m_Readiness.IsIdle(2));
    }
}

TEST_F(ReadinessTest, ADescriptorThatTheLastAnswerDidNotKnowIsNotIdle) {
    Watch(1, m_First);
    int handle = 1;
    EXPECT_TRUE(WaitUntil([&] {
        IsIdleNow(1);
        Watch(++handle, m_Second);
        const bool wasIdle = m_Readiness.IsIdle(handle);
        const bool isIdle = m_Readiness.IsIdle(handle);
        m_Readiness.Forget(handle);
        return !wasIdle && isIdle;
    }));
}

TEST_F(ReadinessTest, WhatIsNotWatchedIsNeverIdle) {
    EXPECT_FALSE(m_Readiness.IsIdle(1));
    Watch(1, m_First);
    Watch(3, m_Second);
    EXPECT_FALSE(m_Readiness.IsIdle(0));
    EXPECT_FALSE(m_Readiness.IsIdle(2));
    EXPECT_FALSE(m_Readiness.IsIdle(4));
    EXPECT_TRUE(IsIdleNow(3));
}

TEST_F(ReadinessTest, HandlesMayBeAskedInAnyOrder) {
    Line lines[16];
    for (int i = 0; i < 16; ++i) {
        Watch(10 * (i + 1), lines[i]);
    }
    lines[5].Send();
    for (const int step : {1, 3, 5, 15}) {
        for (int i = 0; i < 16; ++i) {
            const int place = i * step % 16;
            ASSERT_EQ(place != 5, IsIdleNow(10 * (place + 1))) << place;
        }
    }
}

TEST_F(ReadinessTest, AForgottenDescriptorLeavesTheSetAlthoughItHasADuplicate) {
    Watch(1, m_First);
    Watch(2, m_Second);
    const UniqueFd duplicate(fcntl(m_First.near.Get(), F_DUPFD_CLOEXEC, 0));
    ASSERT_EQ(2U, WatchedDescriptors());
    m_Readiness.Forget(1);
    EXPECT_EQ(1U, WatchedDescriptors());
    EXPECT_FALSE(m_Readiness.IsIdle(1));
    EXPECT_TRUE(IsIdleNow(2));
}

TEST_F(ReadinessTest, AHandleThatComesAfterTheForgottenOnesIsWatched) {
    for (int handle = 1; handle <= 100; ++handle) {
        Watch(handle, m_First);
        ASSERT_TRUE(IsIdleNow(handle));
        m_Readiness.Forget(handle);
    }
    Watch(101, m_First);
    m_First.Send();
    EXPECT_FALSE(IsIdleNow(101));
}

TEST_F(ReadinessTest, AHandleWhosePlaceIsTakenIsNeverIdleUntilItIsFree) {
    Watch(1, m_First);
    Watch(1 + Readiness::kPlaces, m_Second);
    EXPECT_TRUE(IsIdleNow(1));
    EXPECT_FALSE(IsIdleNow(1 + Readiness::kPlaces));
    m_Readiness.Forget(1 + Readiness::kPlaces); // was never watched
    EXPECT_TRUE(IsIdleNow(1));
    EXPECT_EQ(1U, WatchedDescriptors());
    m_Readiness.Forget(1);
    Watch(1 + 2 * Readiness::kPlaces, m_Second);
    EXPECT_TRUE(IsIdleNow(1 + 2 * Readiness::kPlaces));
    EXPECT_FALSE(IsIdleNow(1));
}

TEST_F(ReadinessTest, DescriptorsComeAndGoWhileTheyAreAsked) {
    Watch(1, m_First);
    m_Second.Send();
    std::atomic<bool> isEnding{false};
    std::thread asking([&] {
        while (!isEnding) {
            EXPECT_FALSE(m_Readiness.IsIdle(3));
            m_Readiness.IsIdle(2);
            m_Readiness.IsIdle(1);
        }
    });
    for (int i = 0; i < 2000; ++i) {
        Watch(2, m_Second);
        m_Readiness.Forget(2);
    }
    isEnding = true;
    asking.join();
    EXPECT_FALSE(IsIdleNow(2));
    EXPECT_TRUE(IsIdleNow(1));
    Watch(4, m_Second);
    EXPECT_FALSE(IsIdleNow(4));
}

TEST_F(ReadinessTest, WhatAForkedChildDoesIsNotMissingInItsParent) {
    Watch(1, m_First);
    const pid_t child = fork();
    if (child == 0) {
        m_Readiness.Forget(1);
        Watch(2, m_Second);
        _exit(WatchedDescriptors() == 1 && !IsIdleNow(1) && IsIdleNow(2) ? 0 : 1);
    }
    int status = -1;
    ASSERT_EQ(child, waitpid(child, &status, 0));
    EXPECT_EQ(0, status);
    EXPECT_EQ(1U, WatchedDescriptors());
    EXPECT_TRUE(IsIdleNow(1));
    m_First.Send();
    EXPECT_FALSE(IsIdleNow(1));
}

TEST_F(ReadinessTest, NoDescriptorIsHeldWhileNothingIsWatched) {
    const size_t before = OpenDescriptors();
    Watch(1, m_First);
    Watch(2, m_Second);
    EXPECT_EQ(before + 1, OpenDescriptors());
    m_Readiness.Forget(1);
    EXPECT_EQ(1U, EpollSets());
    m_Readiness.Forget(2);
    EXPECT_EQ(before, OpenDescriptors());
}

TEST_F(ReadinessTest, WhatTheKernelDoesNotWatchIsNeverIdleAndHoldsNothing) {
    const UniqueFd file(open("/proc/self/exe", O_RDONLY | O_CLOEXEC));
    const size_t before = OpenDescriptors();
    m_Readiness.Watch(1, file.Get());
    EXPECT_EQ(before, OpenDescriptors());
    EXPECT_FALSE(IsIdleNow(1));
    Watch(2, m_First);
    EXPECT_FALSE(IsIdleNow(1));
    EXPECT_TRUE(IsIdleNow(2));
}

TEST_F(ReadinessTest, WithoutADescriptorForTheSetNothingIsEverIdle) {
    EXPECT_FALSE(IsIdleNow(1)); // a sanitizer needs a descriptor where it first meets a type
    {
        const DescriptorsUsedUp usedUp;
        Watch(1, m_First);
    }
    EXPECT_FALSE(IsIdleNow(1));
    Watch(2, m_Second);
    EXPECT_TRUE(IsIdleNow(2));
    EXPECT_FALSE(IsIdleNow(1));
}
