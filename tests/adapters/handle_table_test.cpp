// SPDX-License-Identifier: MIT
#include "adapters/shared/handle_table.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <atomic>
#include <functional>
#include <stdexcept>
#include <thread>
#include <utility>
#include <vector>

#include "tests/adapters/watched_descriptors.h"
#include "tests/harness/process_counts.h"
#include "tests/harness/wait_until.h"

namespace {

UniqueFd Master() { return UniqueFd(posix_openpt(O_RDWR | O_NOCTTY | O_CLOEXEC | O_NONBLOCK)); }

std::shared_ptr<OpenTerminal> Terminal() { return std::make_shared<OpenTerminal>(Master()); }

// With a number of its own, which no later one gets.
std::shared_ptr<OpenTerminal> Pipe() {
    int ends[2] = {-1, -1};
    if (pipe2(ends, O_CLOEXEC | O_NONBLOCK) != 0) {
        throw std::runtime_error("no pipe");
    }
    const UniqueFd unused(ends[1]);
    return std::make_shared<OpenTerminal>(UniqueFd(ends[0]));
}

// 0 when it is not open.
ino_t NumberOf(int descriptor) {
    struct stat facts {};
    return fstat(descriptor, &facts) == 0 ? facts.st_ino : 0;
}

// While it is let go, another thread uses the table.
class SlowTerminal : public OpenTerminal {
  public:
    SlowTerminal(HandleTable& table, std::vector<std::thread>& threads, std::atomic<int>& answered)
        : OpenTerminal(Master()), m_Table(table), m_Threads(threads), m_Answered(answered) {}

    ~SlowTerminal() override {
        auto isAnswered = std::make_shared<std::atomic<bool>>(false);
        m_Threads.emplace_back([&table = m_Table, isAnswered] {
            table.Find(0);
            *isAnswered = true;
        });
        if (WaitUntil([&] { return isAnswered->load(); }, std::chrono::seconds(2))) {
            ++m_Answered;
        }
    }

  private:
    HandleTable& m_Table;
    std::vector<std::thread>& m_Threads;
    std::atomic<int>& m_Answered;
};

class HandleTableTest : public testing::Test {
  protected:
    ~HandleTableTest() override {
        m_Table.Clear();
        for (std::thread& thread : m_Threads) {
            thread.join();
        }
    }

    int AddSlow(const std::string& portName) {
        return m_Table.Add(portName,
                           std::make_shared<SlowTerminal>(m_Table, m_Threads, m_Answered));
    }

    bool IsOpen(int handle) { return m_Table.Find(handle).state == HandleTable::State::Open; }

    std::vector<std::thread> m_Threads;
    std::atomic<int> m_Answered{0};
    HandleTable m_Table;
};

} // namespace

TEST_F(HandleTableTest, EachWayOfLettingATerminalGoLeavesTheTableFree) {
    const std::function<void(int)> ways[] = {[&](int handle) { m_Table.Remove(handle); },
                                             [&](int) { m_Table.RemovePort("a"); },
                                             [&](int handle) { m_Table.Kill(handle); },
                                             [&](int) { m_Table.KillPort("a"); },
                                             [&](int) { m_Table.KillAll(); },
                                             [&](int) { m_Table.Add("a", Terminal()); },
                                             [&](int) { m_Table.Clear(); }};
    int expected = 0;
    for (const auto& way : ways) {
        way(AddSlow("a"));
        EXPECT_EQ(++expected, m_Answered);
    }
}

TEST_F(HandleTableTest, AllTerminalsAreDeadBeforeTheFirstIsLetGo) {
    class Asking : public OpenTerminal {
      public:
        Asking(HandleTable& table, int& alive)
            : OpenTerminal(Master()), m_Table(table), m_Alive(alive) {}
        ~Asking() override {
            for (int handle = 1; handle <= 3; ++handle) {
                m_Alive += m_Table.Find(handle).state == HandleTable::State::Open ? 1 : 0;
            }
        }

      private:
        HandleTable& m_Table;
        int& m_Alive;
    };
    int alive = 0;
    for (const char* name : {"a", "b", "c"}) {
        m_Table.Add(name, std::make_shared<Asking>(m_Table, alive));
    }
    m_Table.KillAll();
    EXPECT_EQ(0, alive);
}

TEST_F(HandleTableTest, APortsTerminalIsFoundByItsNameWhileItIsOpen) {
    const auto terminal = Terminal();
    EXPECT_EQ(nullptr, m_Table.FindPort("a"));
    const int handle = m_Table.Add("a", terminal);
    m_Table.Add("b", Terminal());
    EXPECT_EQ(terminal, m_Table.FindPort("a"));
    EXPECT_EQ(terminal, m_Table.Find(handle).terminal);
    m_Table.Kill(handle);
    EXPECT_EQ(nullptr, m_Table.FindPort("a"));
    EXPECT_NE(nullptr, m_Table.FindPort("b"));
}

TEST_F(HandleTableTest, APortThatIsRemovedLosesItsHandleDeadOrAlive) {
    const int dead = m_Table.Add("a", Terminal());
    const int other = m_Table.Add("b", Terminal());
    m_Table.Kill(dead);
    m_Table.RemovePort("a");
    EXPECT_EQ(HandleTable::State::Unknown, m_Table.Find(dead).state);
    const int alive = m_Table.Add("a", Terminal());
    m_Table.RemovePort("a");
    m_Table.RemovePort("nobody");
    EXPECT_EQ(HandleTable::State::Unknown, m_Table.Find(alive).state);
    EXPECT_TRUE(IsOpen(other));
}

TEST_F(HandleTableTest, ANewHandleOfAPortReplacesTheOldOneAlone) {
    const int first = m_Table.Add("a", Terminal());
    const int other = m_Table.Add("b", Terminal());
    const int second = m_Table.Add("a", Terminal());
    EXPECT_EQ(HandleTable::State::Unknown, m_Table.Find(first).state);
    EXPECT_TRUE(IsOpen(other));
    EXPECT_TRUE(IsOpen(second));
    EXPECT_EQ(2U, WatchedDescriptors());
}

TEST_F(HandleTableTest, WhatDiesLeavesTheKernelsSetAtOnceAlsoWhenACallIsInside) {
    const std::function<void(int)> ways[] = {
        [&](int handle) { m_Table.Remove(handle); }, [&](int handle) { m_Table.Kill(handle); },
        [&](int) { m_Table.KillPort("a"); }, [&](int) { m_Table.RemovePort("a"); }};
    m_Table.Add("other", Terminal());
    for (const auto& way : ways) {
        const int handle = m_Table.Add("a", Terminal());
        ASSERT_EQ(2U, WatchedDescriptors());
        const HandleTable::Found inside = m_Table.Find(handle);
        way(handle);
        EXPECT_EQ(1U, WatchedDescriptors());
        EXPECT_FALSE(m_Table.IsIdle(handle));
    }
    m_Table.KillAll();
    EXPECT_EQ(0U, EpollSets());
}

TEST_F(HandleTableTest, AnOpenTerminalIsIdleAndADeadOrUnknownOneIsNot) {
    const UniqueFd master = Master();
    ASSERT_EQ(0, unlockpt(master.Get()));
    const UniqueFd far(open(ptsname(master.Get()), O_RDWR | O_NOCTTY | O_CLOEXEC));
    const int handle = m_Table.Add(
        "a", std::make_shared<OpenTerminal>(UniqueFd(fcntl(master.Get(), F_DUPFD_CLOEXEC, 0))));
    EXPECT_TRUE(WaitUntil([&] { return m_Table.IsIdle(handle); }));
    EXPECT_FALSE(m_Table.IsIdle(handle + 1));
    ASSERT_EQ(1, write(far.Get(), "x", 1));
    EXPECT_TRUE(WaitUntil([&] { return !m_Table.IsIdle(handle); }));
    m_Table.Kill(handle);
    EXPECT_FALSE(m_Table.IsIdle(handle));
}

TEST_F(HandleTableTest, ATerminalThatACallIsInsideStaysOpenUntilTheCallEnds) {
    const size_t before = OpenDescriptors();
    const int handle = m_Table.Add("a", Terminal());
    {
        const HandleTable::Found inside = m_Table.Find(handle);
        m_Table.Kill(handle);
        EXPECT_EQ(HandleTable::State::Dead, m_Table.Find(handle).state);
        EXPECT_EQ(before + 1, OpenDescriptors());
    }
    EXPECT_EQ(before, OpenDescriptors());
}

TEST_F(HandleTableTest, ACallInsideRunsOnTheDescriptorOfAnOpenHandleOnly) {
    const auto terminal = Terminal();
    const int open = m_Table.Add("a", terminal);
    const int dead = m_Table.Add("b", Terminal());
    m_Table.Kill(dead);
    int descriptor = -1;
    EXPECT_TRUE(m_Table.RunInside(open, [&](int inside) { descriptor = inside; }));
    EXPECT_EQ(terminal->Descriptor(), descriptor);
    for (const int handle : {dead, dead + 1, 0, -1, open + 4096}) {
        EXPECT_FALSE(m_Table.RunInside(handle, [](int) { FAIL(); })) << handle;
    }
}

TEST_F(HandleTableTest, OneCallIsInsideAHandleAtATime) {
    const int handle = m_Table.Add("a", Terminal());
    EXPECT_TRUE(m_Table.RunInside(
        handle, [&](int) { EXPECT_FALSE(m_Table.RunInside(handle, [](int) { FAIL(); })); }));
    EXPECT_TRUE(m_Table.RunInside(handle, [](int) {}));
}

TEST_F(HandleTableTest, WhatACallIsInsideIsClosedWhenItLeavesHoweverItWasLetGo) {
    const std::function<void(int)> ways[] = {[&](int handle) { m_Table.Remove(handle); },
                                             [&](int) { m_Table.RemovePort("a"); },
                                             [&](int handle) { m_Table.Kill(handle); },
                                             [&](int) { m_Table.KillPort("a"); },
                                             [&](int) { m_Table.KillAll(); },
                                             [&](int) { m_Table.Clear(); }};
    const size_t before = OpenDescriptors();
    for (const auto& way : ways) {
        const int handle = m_Table.Add("a", Terminal());
        m_Table.RunInside(handle, [&](int descriptor) {
            way(handle);
            EXPECT_NE(-1, fcntl(descriptor, F_GETFD));
            EXPECT_NE(HandleTable::State::Open, m_Table.Find(handle).state);
        });
        EXPECT_EQ(before, OpenDescriptors());
    }
}

TEST_F(HandleTableTest, AHandleWithoutASeatIsFoundAllTheSame) {
    const int first = m_Table.Add("first", Terminal());
    int handle = first;
    while (handle != first + 4096) {
        handle = m_Table.Add("other", Terminal());
    }
    EXPECT_FALSE(m_Table.RunInside(handle, [](int) { FAIL(); }));
    EXPECT_TRUE(IsOpen(handle));
    EXPECT_TRUE(m_Table.RunInside(first, [](int) {}));
}

TEST_F(HandleTableTest, WhatACallWasInsideIsClosedByWhoeverLeavesLast) {
    const size_t before = OpenDescriptors();
    const int handle = m_Table.Add("a", Terminal());
    const int other = m_Table.Add("b", Terminal());
    m_Table.RunInside(other, [&](int) {
        m_Table.RunInside(handle, [&](int) { m_Table.Kill(handle); });
        EXPECT_EQ(before + 3, OpenDescriptors()); // the kernel's set is one
    });
    EXPECT_EQ(before + 2, OpenDescriptors());
}

// Terminals go while another thread's calls are inside: each call stays on the one that it entered, and
// a host that goes on reading finds all of them closed in the end.
TEST_F(HandleTableTest, TerminalsGoWhileCallsAreInside) {
    constexpr int kRounds = 2000;
    const size_t before = OpenDescriptors();
    std::array<std::atomic<ino_t>, kRounds + 1> numbers{}; // by handle
    std::atomic<int> handle{0};
    std::atomic<bool> isEnding{false};
    std::atomic<int> inside{0};
    std::atomic<int> strange{0};
    std::thread calling([&] {
        while (!isEnding) {
            const int current = handle;
            m_Table.RunInside(current, [&](int descriptor) {
                ++inside;
                std::this_thread::yield();
                const ino_t number = numbers[static_cast<size_t>(current)];
                strange += NumberOf(descriptor) == number ? 0 : 1;
            });
        }
    });
    for (int i = 0; i < kRounds; ++i) {
        auto terminal = Pipe();
        const int seen = inside;
        numbers[static_cast<size_t>(i) + 1] = NumberOf(terminal->Descriptor());
        handle = m_Table.Add("a", std::move(terminal));
        while (inside == seen) {
            std::this_thread::yield();
        }
        m_Table.Kill(handle);
    }
    isEnding = true;
    calling.join();
    EXPECT_LE(kRounds, inside);
    EXPECT_EQ(0, strange);
    EXPECT_TRUE(WaitUntil([&] {
        m_Table.IsIdle(handle);
        return OpenDescriptors() == before;
    }));
}
