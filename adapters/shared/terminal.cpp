// SPDX-License-Identifier: MIT
#include "adapters/shared/terminal.h"

#include <poll.h>
#include <sys/syscall.h>
#include <termios.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>

using Clock = std::chrono::steady_clock;

namespace {

// One system call moves no more, so that a deadline is looked at in between.
constexpr size_t kMaxChunk = 65536;

// Bounds a discard against a far end that sends without pause.
constexpr int kMaxDiscards = 64;

// A terminal that has room again does not always say so; it is asked this often.
constexpr std::chrono::milliseconds kAskAgain{20};

bool MustWait(int error) { return error == EAGAIN || error == EINTR; }

void WaitForRoom(int terminal, std::chrono::milliseconds left) {
    pollfd entry{terminal, POLLOUT, 0};
    poll(&entry, 1, static_cast<int>(std::min(left, kAskAgain).count()));
}

// What a first attempt has left over. Apart from it, because looking at the clock costs as much as
// everything else around the attempt.
void WriteRest(int terminal, const unsigned char* bytes, size_t length, Clock::time_point deadline,
               Transfer& total) {
    Transfer last = total;
    while (total.count < length && total.error == 0) {
        const auto left =
            std::chrono::duration_cast<std::chrono::milliseconds>(deadline - Clock::now());
        if (left.count() <= 0) {
            return;
        }
        if (last.count == 0) {
            WaitForRoom(terminal, left);
        }
        last = WriteAvailable(terminal, bytes + total.count, length - total.count);
        total.count += last.count;
        total.error = last.error;
    }
}

} // namespace

int MakeRaw(int terminal) {
    termios settings{};
    if (tcgetattr(terminal, &settings) != 0) {
        return errno;
    }
    cfmakeraw(&settings);
    settings.c_cflag |= CLOCAL | CREAD;
    // With these a non-blocking read tells an idle terminal (EAGAIN) from a hung-up one (0).
    settings.c_cc[VMIN] = 1;
    settings.c_cc[VTIME] = 0;
    return tcsetattr(terminal, TCSANOW, &settings) == 0 ? 0 : errno;
}

Transfer ReadAvailable(int terminal, void* buffer, size_t size) {
    const ssize_t count = read(terminal, buffer, std::min(size, kMaxChunk));
    if (count > 0) {
        return {static_cast<size_t>(count), 0};
    }
    if (count == 0) {
        return {0, EIO};
    }
    return {0, MustWait(errno) ? 0 : errno};
}

Transfer WriteAvailable(int terminal, const void* data, size_t length) {
    if (length == 0) {
        return {};
    }
    // write() makes itself a cancellation point, at a price. This never waits and needs to be none.
    const long count = syscall(SYS_write, terminal, data, std::min(length, kMaxChunk));
    if (count >= 0) {
        return {static_cast<size_t>(count), 0};
    }
    return {0, MustWait(errno) ? 0 : errno};
}

Transfer WriteWithin(int terminal, const void* data, size_t length,
                     std::chrono::milliseconds time) {
    Transfer total = WriteAvailable(terminal, data, length);
    if (total.count < length && total.error == 0) {
        WriteRest(terminal, static_cast<const unsigned char*>(data), length, Clock::now() + time,
                  total);
    }
    return total;
}

void DiscardArrived(int terminal) {
    char buffer[4096];
    for (int i = 0; i < kMaxDiscards; ++i) {
        if (ReadAvailable(terminal, buffer, sizeof buffer).count == 0) {
            return;
        }
    }
}
