// SPDX-License-Identifier: MIT
//
// The files in which spies count, as OSAdaptSpy.h describes them. Anybody's program may have written
// them, so that nothing in them is believed.
#ifndef KOVASCTL_STATS_FILE_H
#define KOVASCTL_STATS_FILE_H

#include <optional>
#include <string>
#include <vector>

#include "tools/kovasctl/stats/stats.h"
#include "tools/kovasctl/unique_fd.h"

/// The counters of one host, which may end at any time.
class StatsFile {
  public:
    /// @throws Failure when the process has none that can be read
    explicit StatsFile(int process);

    /// @return nothing when the host has ended, or let its adapter go
    /// @throws Failure when what is there is no such file
    std::optional<HostStats> Read() const;

  private:
    int m_Process;
    std::string m_Directory;
};

/// The processes of this user that run with a spy, in the order of their numbers.
std::vector<int> SpiedProcesses();

#endif
