// SPDX-License-Identifier: MIT
#include "tests/real_kernel/guest/latency.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <sstream>

#include "tests/real_kernel/guest/guest_host.h"
#include "tests/real_kernel/guest/notices.h"
#include "tests/real_kernel/guest/steering.h"
#include "tests/real_kernel/guest/tty_events.h"

namespace {

constexpr int kRounds = 24;

struct Figures {
    Times notice; // after the event that the adapter waits for
    Times udev;   // from the kernel's event to udev's
};

void Round(const TtyEvents& events, const std::string& request, const std::string& source,
           const std::string& action, Figures& figures) {
    notices::Clear();
    const auto start = std::chrono::steady_clock::now();
    Ask(request);
    ASSERT_TRUE(notices::WaitForSigns(action == "add" ? "+" : "-")) << notices::Signs();
    ASSERT_TRUE(events.WaitFor(source, action, start)) << "no event " << action << " of " << source;
    const auto kernels = events.Latest("kernel", action, start);
    const auto last = events.Latest(source, action, start);
    figures.notice.Add(notices::All().front().when - last->when);
    figures.udev.Add(last->when - kernels->when);
}

int Runs() {
    const char* const text = std::getenv("KOVASMGR_LATENCY_RUNS");
    return text == nullptr ? 1 : std::max(1, std::atoi(text));
}

void MeasureRun(const TtyEvents& events, const std::string& source) {
    Figures insertion;
    Figures pullOut;
    for (int i = 0; i < kRounds && !testing::Test::HasFailure(); ++i) {
        Round(events, "plug 0 A50285BI", source, "add", insertion);
        Round(events, "pull 0", "kernel", "remove", pullOut);
    }
    if (source == "udev") {
        TellFigure("insertion notice after udev's last event", insertion.notice.Text());
        TellFigure("insertion, udev's own time", insertion.udev.Text());
        TellFigure("pull-out notice after the kernel's last event", pullOut.notice.Text());
    } else {
        TellFigure("insertion notice after the kernel's last event, without udev",
                   insertion.notice.Text());
        TellFigure("pull-out notice after the kernel's last event, without udev",
                   pullOut.notice.Text());
    }
}

} // namespace

void Times::Add(std::chrono::steady_clock::duration time) {
    m_Times.push_back(std::chrono::duration<double, std::milli>(time).count());
    std::sort(m_Times.begin(), m_Times.end());
}

double Times::Percentile(double share) const {
    if (m_Times.empty()) {
        return 0;
    }
    const double rank = std::ceil(share * static_cast<double>(m_Times.size()));
    return m_Times.at(static_cast<size_t>(std::max(rank, 1.0)) - 1);
}

std::string Times::Text() const {
    std::ostringstream text;
    text.precision(3);
    text << "p50 " << Percentile(0.5) << " ms, p99 " << Percentile(0.99) << " ms, n "
         << m_Times.size();
    return text.str();
}

void MeasureNotices(const std::string& source) {
    const TtyEvents events;
    const int runs = Runs();
    for (int run = 0; run < runs && !testing::Test::HasFailure(); ++run) {
        MeasureRun(events, source);
    }
}
