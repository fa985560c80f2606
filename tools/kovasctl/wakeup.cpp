// SPDX-License-Identifier: MIT
#include "tools/kovasctl/wakeup.h"

#include <sys/eventfd.h>

#include <cstdint>

#include "tools/kovasctl/failure.h"

Wakeup::Wakeup() : m_Counter(eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK)) {
    if (!m_Counter.IsOpen()) {
        throw Failure("no event counter to be had");
    }
}

void Wakeup::Set() {
    const uint64_t one = 1;
    [[maybe_unused]] const ssize_t written = write(m_Counter.Get(), &one, sizeof one);
}

void Wakeup::Clear() {
    uint64_t count = 0;
    [[maybe_unused]] const ssize_t taken = read(m_Counter.Get(), &count, sizeof count);
}
