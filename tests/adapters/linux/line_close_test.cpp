// SPDX-License-Identifier: MIT
//
// Letting go in bounded time. A socket stands in for the port whose far end takes nothing: with
// linger set, closing one waits too, in the same interruptible way.
#include <arpa/inet.h>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <unistd.h>

#include <chrono>
#include <cstring>
#include <string>

#include "adapters/linux/bounded_call.h"
#include "adapters/shared/unique_fd.h"
#include "tests/adapters/descriptors_used_up.h"
#include "tests/harness/process_counts.h"
#include "tests/harness/wait_until.h"

namespace {

using Clock = std::chrono::steady_clock;
using std::chrono::milliseconds;

double SecondsSince(Clock::time_point start) {
    return std::chrono::duration<double>(Clock::now() - start).count();
}

// A connection whose far end takes nothing: closing it waits for a quarter of a minute.
class StalledConnection {
  public:
    StalledConnection() {
        sockaddr_in address{};
        address.sin_family = AF_INET;
        address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
        socklen_t size = sizeof address;
        auto* plain = reinterpret_cast<sockaddr*>(&address);
        const UniqueFd listener(socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0));
        near = UniqueFd(socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0));
        if (bind(listener.Get(), plain, size) != 0 || listen(listener.Get(), 1) != 0 ||
            getsockname(listener.Get(), plain, &size) != 0 ||
            connect(near.Get(), plain, size) != 0) {
            ADD_FAILURE() << "no connection";
            return;
        }
        m_Far = UniqueFd(accept4(listener.Get(), nullptr, nullptr, SOCK_CLOEXEC));
        const linger waiting{1, 15};
        setsockopt(near.Get(), SOL_SOCKET, SO_LINGER, &waiting, sizeof waiting);
        fcntl(near.Get(), F_SETFL, O_NONBLOCK);
        const std::string block(65536, 'x');
        while (write(near.Get(), block.data(), block.size()) > 0) {
        }
    }

    // Whether the near end has been closed: nothing but its close sends the far end a last byte.
    bool IsClosed() const {
        std::string buffer(size_t{1} << 20, ' ');
        return WaitUntil(
            [&] { return recv(m_Far.Get(), buffer.data(), buffer.size(), MSG_DONTWAIT) == 0; });
    }

    UniqueFd near;

  private:
    UniqueFd m_Far;
};

struct stat FileOf(int descriptor) {
    struct stat info {};
    EXPECT_EQ(0, fstat(descriptor, &info));
    return info;
}

} // namespace

TEST(LineClose, GivesUpWhatTheKernelWaitsForAfterTheTime) {
    StalledConnection connection;
    const size_t threads = RunningThreads();
    const auto start = Clock::now();
    EXPECT_TRUE(LetGoWithin(connection.near.Get(), milliseconds(100)));
    EXPECT_GE(SecondsSince(start), 0.1);
    EXPECT_LT(SecondsSince(start), 2.0);
    EXPECT_EQ(threads, RunningThreads());
    connection.near.Reset();
    EXPECT_TRUE(connection.IsClosed());
}

TEST(LineClose, KeepsTheNumberUntilItsOwnerClosesIt) {
    StalledConnection connection;
    const int number = connection.near.Get();
    ASSERT_TRUE(LetGoWithin(number, milliseconds(10)));
    EXPECT_TRUE(S_ISCHR(FileOf(number).st_mode));
    EXPECT_EQ(FD_CLOEXEC, fcntl(number, F_GETFD));
    const UniqueFd next(open("/dev/null", O_RDONLY | O_CLOEXEC));
    EXPECT_NE(number, next.Get());
}

TEST(LineClose, IsDoneAlsoWhenThereIsNoTimeAtAll) {
    for (int i = 0; i < 200; ++i) {
        int ends[2];
        ASSERT_EQ(0, pipe2(ends, O_CLOEXEC));
        EXPECT_TRUE(LetGoWithin(ends[0], milliseconds(0)));
        EXPECT_TRUE(S_ISCHR(FileOf(ends[0]).st_mode));
        close(ends[0]);
        close(ends[1]);
    }
}

TEST(LineClose, WithoutADescriptorLeftIsTheOwners) {
    int ends[2];
    ASSERT_EQ(0, pipe2(ends, O_CLOEXEC));
    {
        const DescriptorsUsedUp none;
        EXPECT_FALSE(LetGoWithin(ends[0], milliseconds(10)));
    }
    EXPECT_TRUE(S_ISFIFO(FileOf(ends[0]).st_mode));
    close(ends[0]);
    close(ends[1]);
}

TEST(LineClose, LeavesNothingBehind) {
    const size_t descriptors = OpenDescriptors();
    const size_t threads = RunningThreads();
    for (int i = 0; i < 20; ++i) {
        StalledConnection connection;
        LetGoWithin(connection.near.Get(), milliseconds(1));
    }
    EXPECT_EQ(descriptors, OpenDescriptors());
    EXPECT_EQ(threads, RunningThreads());
}

TEST(LineClose, CallsThatEndInTimeAreWaitedForNoLonger) {
    const auto start = Clock::now();
    int count = 0;
    EXPECT_TRUE(CallWithin(
        std::chrono::seconds(30), [](void* argument) { ++*static_cast<int*>(argument); }, &count));
    EXPECT_EQ(1, count);
    EXPECT_LT(SecondsSince(start), 5.0);
}

TEST(LineClose, CallsThatDoNotEndAreCancelled) {
    // Not on the thread's stack, which is not unwound in an orderly way.
    struct Reading {
        int ends[2];
        char byte;
    } reading{};
    ASSERT_EQ(0, pipe2(reading.ends, O_CLOEXEC));
    const auto start = Clock::now();
    EXPECT_TRUE(CallWithin(
        milliseconds(50),
        [](void* argument) {
            auto* it = static_cast<Reading*>(argument);
            while (read(it->ends[0], &it->byte, 1) != 1) {
            }
        },
        &reading));
    EXPECT_GE(SecondsSince(start), 0.05);
    EXPECT_LT(SecondsSince(start), 5.0);
    close(reading.ends[0]);
    close(reading.ends[1]);
}
