// SPDX-License-Identifier: MIT
//
// How counters are shown.
#ifndef KOVASCTL_STATS_TEXT_H
#define KOVASCTL_STATS_TEXT_H

#include <cstddef>
#include <string>

#include "tools/kovasctl/stats/stats.h"

/// A table with a line for each port.
///
/// @param before   what was shown before, for the bytes a second; null: there is none
/// @param maxRows  lines that there is room for; ports that find none are told by their number
std::string StatsTable(const HostStats& stats, const HostStats* before, size_t maxRows);

/// One object and a line end; tools/kovasctl/README.md describes it.
std::string StatsAsJson(const HostStats& stats);

#endif
