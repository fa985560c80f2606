// SPDX-License-Identifier: MIT
#include "tools/kovasctl/streams.h"

#include <fcntl.h>
#include <signal.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <cstring>

#include "tools/kovasctl/failure.h"
#include "tools/kovasctl/waiting.h"

namespace {

constexpr int kFirstFree = 3;

// A pipe that poll calls writable takes this much without blocking (PIPE_BUF).
constexpr size_t kPiece = 4096;

int s_Data = -1;

bool IsOpen(int descriptor) { return fcntl(descriptor, F_GETFD) >= 0; }

// Whatever is opened later must not get a number that means a standard stream.
void FillGaps() {
    for (int descriptor = 0; descriptor < kFirstFree; ++descriptor) {
        if (!IsOpen(descriptor)) {
            [[maybe_unused]] const int opened =
                open("/dev/null", O_RDWR); // takes the lowest number
        }
    }
}

[[noreturn]] void FailWriting(int error) {
    if (error == EPIPE) {
        throw Interrupted{SIGPIPE};
    }
    throw Failure(std::string("standard output: ") + std::strerror(error));
}

size_t WritePiece(std::string_view data) {
    const ssize_t count = write(s_Data, data.data(), std::min(data.size(), kPiece));
    if (count < 0 && errno != EINTR && errno != EAGAIN) {
        FailWriting(errno);
    }
    return count < 0 ? 0 : static_cast<size_t>(count);
}

} // namespace

void PrepareStreams() {
    s_Data = fcntl(STDOUT_FILENO, F_DUPFD_CLOEXEC, kFirstFree);
    FillGaps();
    const int nowhere = open("/dev/null", O_WRONLY | O_CLOEXEC);
    if (nowhere < 0 || dup2(nowhere, STDOUT_FILENO) < 0) {
        throw Failure(std::string("/dev/null: ") + std::strerror(errno));
    }
    close(nowhere);
}

int DataDescriptor() { return s_Data; }
bool IsDataOnTerminal() { return isatty(s_Data) == 1; }
bool IsMessageOnTerminal() { return isatty(STDERR_FILENO) == 1; }

bool HasColours() {
    const char* refusal = std::getenv("NO_COLOR");
    const char* terminal = std::getenv("TERM");
    return (refusal == nullptr || *refusal == '\0') && terminal != nullptr &&
           std::strcmp(terminal, "dumb") != 0 && IsDataOnTerminal();
}

void WriteData(std::string_view data) {
    if (s_Data < 0) {
        FailWriting(EBADF);
    }
    while (!data.empty()) {
        WaitUntilWritable(s_Data);
        data.remove_prefix(WritePiece(data));
    }
}

void Message(const std::string& text) { WriteMessage("kovasctl: " + text + "\n"); }

// Messages are for a person who may have gone; that they cannot be written changes nothing.
void WriteMessage(std::string_view text) {
    while (!text.empty()) {
        const ssize_t count = write(STDERR_FILENO, text.data(), text.size());
        if (count <= 0 && errno != EINTR) {
            return;
        }
        text.remove_prefix(count < 0 ? 0 : static_cast<size_t>(count));
    }
}
