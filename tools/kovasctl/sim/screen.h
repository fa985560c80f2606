// SPDX-License-Identifier: MIT
#ifndef KOVASCTL_SIM_SCREEN_H
#define KOVASCTL_SIM_SCREEN_H

#include <string>

#include "tools/kovasctl/difference.h"
#include "tools/kovasctl/sim/arrivals.h"
#include "tools/kovasctl/sim/status.h"
#include "tools/kovasctl/waiting.h"

/// Shows a simulation on standard output as it goes, a line for everything that happens, with the
/// time by the scenario's clock.
class SimScreen {
  public:
    /// From now on times are counted from this one.
    void SetStatus(const SimStatus& status);

    /// @throws Interrupted, Failure
    void Tell(const Change& change);
    void TellOpened(const std::string& port) { Line("  opened     ", port); }
    void TellRefused(const std::string& port) { Line("  refused    ", port); }
    void Tell(const SimArrivals::Arrival& arrival);

  private:
    std::string Time() const;
    void Line(const std::string& what, const std::string& text);

    SimStatus m_Status;
    Clock::time_point m_StatusAt = Clock::now();
};

#endif
