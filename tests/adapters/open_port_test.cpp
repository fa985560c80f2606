// SPDX-License-Identifier: MIT
#include <fcntl.h>
#include <pthread.h>
#include <signal.h>
#include <sys/ioctl.h>
#include <sys/wait.h>
#include <termios.h>
#include <unistd.h>

#include <atomic>
#include <chrono>
#include <climits>
#include <cstring>
#include <ctime>
#include <functional>
#include <memory>
#include <thread>

#include "tests/adapters/adapter_under_test.h"
#include "tests/adapters/descriptors_used_up.h"
#include "tests/adapters/far_program.h"
#include "tests/adapters/virtual_bench.h"
#include "tests/adapters/watched_descriptors.h"
#include "tests/harness/process_counts.h"
#include "tests/harness/wait_until.h"

namespace {

using Clock = std::chrono::steady_clock;

double SecondsSince(Clock::time_point start) {
    return std::chrono::duration<double>(Clock::now() - start).count();
}

std::string AllByteValues() {
    std::string bytes;
    for (int value = 0; value < 256; ++value) {
        bytes += static_cast<char>(value);
    }
    return bytes;
}

class OpenPort : public VirtualBench {
  protected:
    OpenPort() { UseScenario(kTwoDevices); }

    // More than a terminal holds.
    void FillUntilStalled(int handle) const {
        const std::string block(16384, 'x');
        while (m_Adapter.WriteText(handle, block) > 0) {
        }
    }

    AdapterUnderTest m_Adapter;
};

} // namespace

TEST_F(OpenPort, AllByteValuesPassUnchangedInBothDirections) {
    const int handle = m_Adapter.OpenPort("l0");
    const FarProgram far(PortLink("l0"));
    const std::string bytes = AllByteValues();
    ASSERT_EQ(256, m_Adapter.WriteText(handle, bytes));
    EXPECT_EQ(bytes, far.Receive(256));
    ASSERT_TRUE(far.Send(bytes));
    std::string back;
    EXPECT_TRUE(WaitUntil([&] {
        back += m_Adapter.ReadText(handle);
        return back.size() >= 256;
    }));
    EXPECT_EQ(bytes, back);
}

TEST_F(OpenPort, ReadingWithoutDataSucceedsAtOnceAndSetsTheCount) {
    const int handle = m_Adapter.OpenPort("l0");
    char buffer[16];
    long count = 77;
    const auto start = Clock::now();
    EXPECT_EQ(OS_ADAPT_OK, m_Adapter.Read(handle, buffer, sizeof buffer, &count));
    EXPECT_EQ(0, count);
    EXPECT_LT(SecondsSince(start), 0.5);
}

TEST_F(OpenPort, AReadGivesAtMostWhatWasAskedForAndKeepsTheRest) {
    const int handle = m_Adapter.OpenPort("l0");
    const FarProgram far(PortLink("l0"));
    ASSERT_TRUE(far.Send("abcdef"));
    char buffer[8] = "-------";
    long count = 0;
    ASSERT_TRUE(WaitUntil([&] {
        m_Adapter.Read(handle, buffer, 4, &count);
        return count != 0;
    }));
    EXPECT_EQ(4, count);
    EXPECT_STREQ("abcd---", buffer);
    EXPECT_EQ("ef", m_Adapter.ReadText(handle));
}

TEST_F(OpenPort, AWriteThatNobodyFetchesEndsWithinABoundAndIsLoggedOnce) {
    const int handle = m_Adapter.OpenPort("l0");
    const std::string block(100000, 'x');
    const auto start = Clock::now();
    const long taken = m_Adapter.WriteText(handle, block);
    EXPECT_GT(taken, 0);
    EXPECT_LT(taken, 100000);
    EXPECT_LT(SecondsSince(start), 2.0);
    EXPECT_EQ(0, m_Adapter.WriteText(handle, block));
    EXPECT_EQ(0, m_Adapter.WriteText(handle, block));
    EXPECT_LT(SecondsSince(start), 4.5);
    EXPECT_EQ(1, LogLines("port 'l0' took no byte within 1000 ms"));
}

TEST_F(OpenPort, AWriteGoesOnAsSoonAsTheFarEndFetches) {
    const int handle = m_Adapter.OpenPort("l0");
    const FarProgram far(PortLink("l0"));
    std::string received;
    std::thread reader([&] { received = far.Receive(200000); });
    std::string sent;
    while (sent.size() < 200000) {
        const std::string block(200000 - sent.size(), static_cast<char>('a' + sent.size() % 26));
        const long taken = m_Adapter.WriteText(handle, block);
        ASSERT_GT(taken, 0);
        sent += block.substr(0, static_cast<size_t>(taken));
    }
    reader.join();
    EXPECT_TRUE(sent == received);
}

TEST_F(OpenPort, WhatWasSentBeforeTheOpeningIsNotSeen) {
    int handle = m_Adapter.OpenPort("l0");
    const FarProgram far(PortLink("l0"));
    ASSERT_TRUE(far.Send("before"));
    ASSERT_EQ("before", m_Adapter.ReadUntil(handle, "before"));
    ASSERT_EQ(OS_ADAPT_OK, m_Adapter.Close(handle));
    ASSERT_TRUE(far.Send("while closed"));
    handle = m_Adapter.OpenPort("l0");
    ASSERT_TRUE(far.Send("after"));
    EXPECT_EQ("after", m_Adapter.ReadUntil(handle, "after"));
}

TEST_F(OpenPort, AFarProgramCanSendWithoutEndWhileTheHostHasThePortClosed) {
    const int other = m_Adapter.OpenPort("l1");
    ASSERT_NE(OS_ADAPT_NO_HANDLE, other);
    const FarProgram far(PortLink("l0"));
    EXPECT_TRUE(far.Send(std::string(300000, 'x')));
    const int handle = m_Adapter.OpenPort("l0");
    EXPECT_EQ("", m_Adapter.ReadText(handle));
}

TEST_F(OpenPort, AFarProgramThatClosesAndComesBackFindsTheLineWorking) {
    const int handle = m_Adapter.OpenPort("l0");
    for (int i = 0; i < 20; ++i) {
        const FarProgram far(PortLink("l0"));
        ASSERT_TRUE(far.Send("ping"));
        ASSERT_EQ("ping", m_Adapter.ReadUntil(handle, "ping"));
        ASSERT_EQ(4, m_Adapter.WriteText(handle, "pong"));
        ASSERT_EQ("pong", far.Receive(4));
    }
    EXPECT_EQ("", m_Adapter.ReadText(handle));
}

TEST_F(OpenPort, OpeningMakesRawATerminalThatAProgramLeftCooked) {
    int handle = m_Adapter.OpenPort("l0");
    {
        const FarProgram far(PortLink("l0"));
        termios settings{};
        ASSERT_EQ(0, tcgetattr(far.Terminal(), &settings));
        settings.c_lflag |= ICANON | ECHO;
        settings.c_oflag |= OPOST | ONLCR;
        ASSERT_EQ(0, tcsetattr(far.Terminal(), TCSANOW, &settings));
    }
    handle = m_Adapter.OpenPort("l0");
    const FarProgram far(PortLink("l0"));
    ASSERT_EQ(2, m_Adapter.WriteText(handle, "a\r"));
    EXPECT_EQ("a\r", far.Receive(2));
    ASSERT_TRUE(far.Send("b\n"));
    EXPECT_EQ("b\n", m_Adapter.ReadUntil(handle, "\n"));
}

TEST_F(OpenPort, OpeningAnOpenPortClosesTheOldHandleAndGivesANewOne) {
    const int first = m_Adapter.OpenPort("l0");
    const size_t descriptors = OpenDescriptors();
    const int second = m_Adapter.OpenPort("l0");
    EXPECT_GT(second, first);
    EXPECT_EQ(descriptors, OpenDescriptors());
    EXPECT_NE(OS_ADAPT_OK, m_Adapter.Close(first));
    EXPECT_EQ(-1, m_Adapter.WriteText(first, "x"));
    EXPECT_EQ(1, m_Adapter.WriteText(second, "x"));
    EXPECT_EQ(OS_ADAPT_OK, m_Adapter.Close(second));
}

TEST_F(OpenPort, HandlesAreNeverUsedAgainAlsoAfterUnRegistration) {
    int last = 0;
    for (int i = 0; i < 50; ++i) {
        const int handle = m_Adapter.OpenPort(i % 2 == 0 ? "l0" : "r1");
        ASSERT_GT(handle, last);
        last = handle;
        ASSERT_EQ(OS_ADAPT_OK, m_Adapter.Close(handle));
        if (i % 10 == 9) {
            ASSERT_EQ(OS_ADAPT_OK, m_Adapter.UnRegister(nullptr));
        }
    }
}

TEST_F(OpenPort, APortThatIsPulledOutFailsOneReadAndEveryWriteAndOpening) {
    const int handle = m_Adapter.OpenPort("l0");
    ASSERT_EQ("ok", Command("pull left"));
    char buffer[8];
    long count = 77;
    EXPECT_NE(OS_ADAPT_OK, m_Adapter.Read(handle, buffer, sizeof buffer, &count));
    for (int i = 0; i < 5; ++i) {
        count = 77;
        EXPECT_EQ(OS_ADAPT_OK, m_Adapter.Read(handle, buffer, sizeof buffer, &count));
        EXPECT_EQ(0, count);
    }
    const auto start = Clock::now();
    EXPECT_EQ(-1, m_Adapter.WriteText(handle, "x"));
    EXPECT_EQ(OS_ADAPT_NO_HANDLE, m_Adapter.OpenPort("l0"));
    EXPECT_EQ(OS_ADAPT_NO_HANDLE, m_Adapter.OpenPort("l0"));
    EXPECT_LT(SecondsSince(start), 0.5);
    EXPECT_EQ(1, LogLines("port 'l0' cannot be opened: it is not there"));
    EXPECT_EQ(1, LogLines("port 'l0' is gone; this is its last failing read"));
    EXPECT_EQ(OS_ADAPT_OK, m_Adapter.Close(handle));
    EXPECT_NE(OS_ADAPT_OK, m_Adapter.Close(handle));
}

TEST_F(OpenPort, APullClosesTheDescriptorsOfTheDevicesPortsAtOnce) {
    const int handle = m_Adapter.OpenPort("l0");
    const FarProgram far(PortLink("l0"));
    ControlClient client(ControlDirectory());
    ASSERT_NE("", client.Ask("list")); // both ends of the connection are open now
    const size_t before = OpenDescriptors();
    ASSERT_EQ("ok", client.Ask("pull left"));
    // Two pairs, the host's own end, and the set by which open ports are watched.
    EXPECT_EQ(before - 6, OpenDescriptors());
    EXPECT_TRUE(far.IsHungUp());
    EXPECT_EQ(OS_ADAPT_OK, m_Adapter.Close(handle));
}

TEST_F(OpenPort, AClosedOrPulledPortIsNotWatchedAnyMoreAlthoughItsPairStaysOpen) {
    const int left = m_Adapter.OpenPort("l0");
    const int right = m_Adapter.OpenPort("r0");
    ASSERT_EQ(2U, WatchedDescriptors());
    ASSERT_EQ(OS_ADAPT_OK, m_Adapter.Close(left));
    EXPECT_EQ(1U, WatchedDescriptors());
    ASSERT_GT(m_Adapter.OpenPort("l0"), 0);
    ASSERT_GT(m_Adapter.OpenPort("l0"), 0);
    EXPECT_EQ(2U, WatchedDescriptors());
    ASSERT_EQ("ok", Command("pull left"));
    EXPECT_EQ(1U, WatchedDescriptors());
    ASSERT_EQ(OS_ADAPT_OK, m_Adapter.Close(right));
    EXPECT_EQ(0U, EpollSets());
}

TEST_F(OpenPort, APullEndsAWriteThatIsWaiting) {
    const int handle = m_Adapter.OpenPort("l0");
    FillUntilStalled(handle);
    std::atomic<bool> isWriting{false};
    long result = 0;
    const auto start = Clock::now();
    std::thread writer([&] {
        isWriting = true;
        result = m_Adapter.WriteText(handle, "more");
    });
    ASSERT_TRUE(WaitUntil([&] { return isWriting.load(); }));
    ASSERT_EQ("ok", Command("pull left"));
    writer.join();
    EXPECT_LE(result, 0);
    EXPECT_LT(SecondsSince(start), 2.0);
}

TEST_F(OpenPort, ACancelledWriteHoldsNoLock) {
    const int handle = m_Adapter.OpenPort("l0");
    FillUntilStalled(handle);
    struct Call {
        const AdapterUnderTest& adapter;
        int handle;
        std::atomic<bool> started{false};
    } call{m_Adapter, handle};
    for (int i = 0; i < 5; ++i) {
        pthread_t thread{};
        call.started = false;
        ASSERT_EQ(0, pthread_create(
                         &thread, nullptr,
                         [](void* argument) -> void* {
                             auto* it = static_cast<Call*>(argument);
                             it->started = true;
                             while (true) {
                                 const char byte = 'x';
                                 long written = 0;
                                 it->adapter.Write(it->handle, &byte, 1, &written);
                             }
                         },
                         &call));
        ASSERT_TRUE(WaitUntil([&] { return call.started.load(); }));
        ASSERT_EQ(0, pthread_cancel(thread));
        void* result = nullptr;
        ASSERT_EQ(0, pthread_join(thread, &result));
        EXPECT_EQ(PTHREAD_CANCELED, result);
    }
    EXPECT_EQ("", m_Adapter.ReadText(handle));
    EXPECT_EQ("left(l0 l1) right(r0 r1)", m_Adapter.DevicesText());
    EXPECT_EQ(OS_ADAPT_OK, m_Adapter.Close(handle));
}

TEST_F(OpenPort, ACancellationThatIsPendingHarmsNoCall) {
    const int first = m_Adapter.OpenPort("l0");
    const std::function<void()> calls[] = {
        [&] { m_Adapter.Close(first); },
        [&] { m_Adapter.Devices(); },
        [&] { m_Adapter.OpenPort("nobody"); },
        [&] { m_Adapter.ReadText(m_Adapter.OpenPort("l1")); },
        [&] { m_Adapter.WriteText(m_Adapter.OpenPort("l1"), "x"); },
        [&] { m_Adapter.WriteText(4711, "x"); },
        [&] { m_Adapter.Register([](_OS_ADAPT_DEVICESTATUS_TYPE) {}); },
        [&] { m_Adapter.UnRegister(nullptr); },
        [&] { m_Adapter.Devices(); },
    };
    for (const std::function<void()>& call : calls) {
        pthread_t thread{};
        ASSERT_EQ(0, pthread_create(
                         &thread, nullptr,
                         [](void* argument) -> void* {
                             pthread_cancel(pthread_self());
                             (*static_cast<const std::function<void()>*>(argument))();
                             pthread_testcancel();
                             return nullptr;
                         },
                         const_cast<std::function<void()>*>(&call)));
        void* result = nullptr;
        ASSERT_EQ(0, pthread_join(thread, &result));
        EXPECT_EQ(PTHREAD_CANCELED, result);
    }
    EXPECT_EQ("left(l0 l1) right(r0 r1)", m_Adapter.DevicesText());
    const int handle = m_Adapter.OpenPort("l0");
    EXPECT_EQ(1, m_Adapter.WriteText(handle, "x"));
}

TEST_F(OpenPort, BadArgumentsFailWithoutHarm) {
    const int handle = m_Adapter.OpenPort("l0");
    char buffer[8];
    long count = 0;
    int newHandle = 5;
    EXPECT_NE(OS_ADAPT_OK, m_Adapter.Open(nullptr, &newHandle));
    EXPECT_NE(OS_ADAPT_OK, m_Adapter.Open("l0", nullptr));
    EXPECT_NE(OS_ADAPT_OK, m_Adapter.Open("", &newHandle));
    EXPECT_NE(OS_ADAPT_OK, m_Adapter.Open("no such\nport %s%n", &newHandle));
    EXPECT_NE(OS_ADAPT_OK, m_Adapter.Open(std::string(100000, 'n').c_str(), &newHandle));
    EXPECT_EQ(5, newHandle);
    for (const int bad : {-1, 0, INT_MIN, INT_MAX, handle + 1}) {
        EXPECT_NE(OS_ADAPT_OK, m_Adapter.Close(bad));
        EXPECT_NE(OS_ADAPT_OK, m_Adapter.Write(bad, buffer, 1, &count));
        EXPECT_NE(OS_ADAPT_OK, m_Adapter.Read(bad, buffer, 1, &count));
    }
    EXPECT_NE(OS_ADAPT_OK, m_Adapter.Write(handle, nullptr, 1, &count));
    EXPECT_NE(OS_ADAPT_OK, m_Adapter.Write(handle, buffer, -1, &count));
    EXPECT_NE(OS_ADAPT_OK, m_Adapter.Write(handle, buffer, LONG_MIN, &count));
    EXPECT_NE(OS_ADAPT_OK, m_Adapter.Write(handle, buffer, 1, nullptr));
    EXPECT_NE(OS_ADAPT_OK, m_Adapter.Read(handle, nullptr, 1, &count));
    EXPECT_NE(OS_ADAPT_OK, m_Adapter.Read(handle, buffer, 0, &count));
    EXPECT_NE(OS_ADAPT_OK, m_Adapter.Read(handle, buffer, -1, &count));
    EXPECT_NE(OS_ADAPT_OK, m_Adapter.Read(handle, buffer, 1, nullptr));
    EXPECT_NE(OS_ADAPT_OK, m_Adapter.Enumerate(OS_ADAPT_ENUM_ALL, nullptr));
    const auto list = std::make_unique<_OS_ADAPT_DEVICEPORTLIST>();
    EXPECT_NE(OS_ADAPT_OK, m_Adapter.Enumerate(3, list.get()));
    EXPECT_NE(OS_ADAPT_OK, m_Adapter.Register(nullptr));
    EXPECT_EQ(0, m_Adapter.WriteText(handle, ""));
    EXPECT_EQ(2, m_Adapter.WriteText(handle, "ok"));
    EXPECT_EQ(1, LogLines("port 'no such?port %s%n' cannot be opened"));
}

TEST_F(OpenPort, AWriteThatRunsOutOfReadableMemoryDoesNotKillThePort) {
    const int handle = m_Adapter.OpenPort("l0");
    long written = 0;
    // Nothing is mapped there.
    const auto* nowhere = reinterpret_cast<const void*>(uintptr_t{16});
    EXPECT_NE(OS_ADAPT_OK, m_Adapter.Write(handle, nowhere, 100, &written));
    EXPECT_EQ(2, m_Adapter.WriteText(handle, "ok"));
}

TEST_F(OpenPort, AReadIntoInaccessibleMemoryLeavesThePortItsDeathNotice) {
    const int handle = m_Adapter.OpenPort("l0");
    const FarProgram far(PortLink("l0"));
    long count = 0;
    auto* nowhere = reinterpret_cast<void*>(uintptr_t{16});
    ASSERT_TRUE(far.Send("x"));
    ASSERT_TRUE(
        WaitUntil([&] { return m_Adapter.Read(handle, nowhere, 100, &count) != OS_ADAPT_OK; }));
    ASSERT_TRUE(far.Send("y"));
    ASSERT_NE(std::string::npos, m_Adapter.ReadUntil(handle, "y").find('y'));
    ASSERT_EQ("ok", Command("pull left"));
    char buffer[8];
    EXPECT_NE(OS_ADAPT_OK, m_Adapter.Read(handle, buffer, sizeof buffer, &count));
    EXPECT_EQ(OS_ADAPT_OK, m_Adapter.Read(handle, buffer, sizeof buffer, &count));
}

TEST_F(OpenPort, ALoweredDescriptorLimitDoesNotMakeTheServiceThreadSpin) {
    const int handle = m_Adapter.OpenPort("l0");
    rlimit before{};
    getrlimit(RLIMIT_NOFILE, &before);
    rlimit low = before;
    low.rlim_cur = 3; // fewer than the service thread waits for
    ASSERT_EQ(0, setrlimit(RLIMIT_NOFILE, &low));
    const std::clock_t start = std::clock();
    EXPECT_EQ(OS_ADAPT_OK, m_Adapter.Close(handle)); // wakes the thread
    std::this_thread::sleep_for(std::chrono::milliseconds(500));
    const std::clock_t used = std::clock() - start;
    ASSERT_EQ(0, setrlimit(RLIMIT_NOFILE, &before));
    EXPECT_LT(used, CLOCKS_PER_SEC / 5);
    EXPECT_EQ("ok", Command("pull left"));
    EXPECT_LE(LogLines("waiting failed"), 1);
}

TEST_F(OpenPort, TooFewDescriptorsFailTheOpeningWithAReason) {
    // A sanitizer needs a descriptor where it meets a type for the first time.
    ASSERT_EQ(OS_ADAPT_NO_HANDLE, m_Adapter.OpenPort("nobody"));
    ASSERT_EQ(OS_ADAPT_OK, m_Adapter.Close(m_Adapter.OpenPort("l1")));
    {
        const DescriptorsUsedUp usedUp;
        EXPECT_EQ(OS_ADAPT_NO_HANDLE, m_Adapter.OpenPort("l0"));
    }
    EXPECT_EQ(1, LogLines("Too many open files"));
    EXPECT_NE(OS_ADAPT_NO_HANDLE, m_Adapter.OpenPort("l0"));
}

TEST_F(OpenPort, AFarProgramThatHangsTheTerminalUpCostsTheHandleAndNotThePort) {
    if (geteuid() != 0) {
        GTEST_SKIP() << "hanging a terminal up needs root";
    }
    const int handle = m_Adapter.OpenPort("l0");
    const std::string link = PortLink("l0");
    const pid_t child = fork();
    if (child == 0) {
        setsid();
        signal(SIGHUP, SIG_IGN);
        const int terminal = open(link.c_str(), O_RDWR);
        ioctl(terminal, TIOCSCTTY, 0);
        _exit(vhangup() == 0 ? 0 : 1);
    }
    int status = 1;
    ASSERT_EQ(child, waitpid(child, &status, 0));
    ASSERT_EQ(0, status);
    EXPECT_TRUE(WaitUntil([&] { return LogLines("was hung up") == 1; }));
    // Read until the failure, if the host was faster than the mending.
    char byte = 0;
    long count = 0;
    m_Adapter.Read(handle, &byte, 1, &count);
    const int again = m_Adapter.OpenPort("l0");
    ASSERT_GT(again, 0);
    const FarProgram far(link);
    ASSERT_TRUE(far.Send("back\n"));
    EXPECT_EQ("back\n", m_Adapter.ReadUntil(again, "\n"));
    EXPECT_EQ(2, m_Adapter.WriteText(again, "a\r"));
    EXPECT_EQ("a\r", far.Receive(2));
}
