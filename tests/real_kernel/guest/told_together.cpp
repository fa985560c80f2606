// SPDX-License-Identifier: MIT
#include "tests/real_kernel/guest/told_together.h"

#include <algorithm>
#include <chrono>

#include "tests/harness/wait_until.h"
#include "tests/real_kernel/guest/guest_host.h"
#include "tests/real_kernel/guest/notices.h"

namespace {

// Somewhat less than the pause itself: this thread may see a short one where the adapter saw 10 ms.
constexpr std::chrono::milliseconds kPause{8};

} // namespace

int NoticesOf(const std::string& action) {
    const std::string signs = notices::Signs();
    return static_cast<int>(std::count(signs.begin(), signs.end(), action == "add" ? '+' : '-'));
}

bool WasToldTogether(const TtyEvents& events, const std::string& source, const std::string& action,
                     TtyEvents::Instant start) {
    WaitUntil([&] { return NoticesOf(action) > 0; });
    const int count = NoticesOf(action);
    const std::string times = events.Timeline(source, action, start);
    TellFigure("a device's ports, " + action,
               source + "'s events at " + times + ", notices " + std::to_string(count));
    return count > 0 && count <= events.Groups(source, action, start, kPause);
}
