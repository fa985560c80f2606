// SPDX-License-Identifier: MIT
#include "tools/kovasctl/waiting.h"

#include <poll.h>
#include <signal.h>

#include <algorithm>
#include <vector>

#include "tools/kovasctl/failure.h"
#include "tools/kovasctl/signals.h"
#include "tools/kovasctl/streams.h"

namespace {

// Longer waits are made of several, so that the time in milliseconds fits poll's argument.
constexpr std::chrono::milliseconds kLongest{60'000};

int PollTime(const Deadline& deadline) {
    if (!deadline) {
        return static_cast<int>(kLongest.count());
    }
    const auto left = std::chrono::ceil<std::chrono::milliseconds>(*deadline - Clock::now());
    return static_cast<int>(std::clamp(left, std::chrono::milliseconds(0), kLongest).count());
}

// A pipe without a reader reports an error also when nothing is asked of it.
void ThrowIfReaderGone(const pollfd& data) {
    if ((data.revents & POLLERR) != 0) {
        throw Interrupted{SIGPIPE};
    }
}

} // namespace

Deadline After(std::optional<double> seconds) {
    if (!seconds) {
        return std::nullopt;
    }
    return Clock::now() +
           std::chrono::duration_cast<Clock::duration>(std::chrono::duration<double>(*seconds));
}

bool IsOver(const Deadline& deadline) { return deadline && Clock::now() >= *deadline; }

Deadline Sooner(const Deadline& left, const Deadline& right) {
    return left && right ? std::min(*left, *right) : (left ? left : right);
}

void WaitForInput(std::initializer_list<int> descriptors, const Deadline& deadline) {
    std::vector<pollfd> entries{{SignalDescriptor(), POLLIN, 0}, {DataDescriptor(), 0, 0}};
    for (const int descriptor : descriptors) {
        entries.push_back({descriptor, POLLIN, 0});
    }
    const auto isReady = [](const pollfd& entry) { return entry.revents != 0; };
    do {
        ThrowIfInterrupted();
        poll(entries.data(), entries.size(), PollTime(deadline));
        ThrowIfInterrupted();
        ThrowIfReaderGone(entries[1]);
    } while (std::none_of(entries.begin() + 2, entries.end(), isReady) && !IsOver(deadline));
}

bool IsReadable(int descriptor) {
    pollfd entry{descriptor, POLLIN, 0};
    return poll(&entry, 1, 0) == 1;
}

void WaitUntilWritable(int descriptor) {
    pollfd entries[] = {{SignalDescriptor(), POLLIN, 0}, {descriptor, POLLOUT, 0}};
    do {
        ThrowIfInterrupted();
        poll(entries, 2, -1);
        ThrowIfInterrupted();
    } while (entries[1].revents == 0);
}
