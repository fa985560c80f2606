// SPDX-License-Identifier: MIT
#include "tools/kovasctl/stats/text.h"

#include <algorithm>
#include <cstdio>
#include <vector>

#include "tools/kovasctl/paint.h"
#include "tools/kovasctl/printable.h"
#include "tools/kovasctl/time_text.h"

namespace {

using Row = std::vector<std::string>;

constexpr size_t kFrameRows = 5; // around the ports: two lines above, three below

uint64_t Failures(const PortStats& port) {
    uint64_t failures = 0;
    for (const OSADAPT_SPY_KIND kind : kPortCalls) {
        failures += port.Of(kind).nFailures;
    }
    return failures;
}

std::string TimeText(uint64_t nanoseconds) {
    struct Unit {
        uint64_t size;
        const char* name;
    };
    constexpr Unit kUnits[] = {{1000000000, "s"}, {1000000, "ms"}, {1000, "us"}, {1, "ns"}};
    const Unit* unit = std::begin(kUnits);
    while (nanoseconds < unit->size && unit->size > 1) {
        ++unit;
    }
    char text[40] = "";
    std::snprintf(text, sizeof text, "%.*f %s", unit->size == 1 ? 0 : 1,
                  static_cast<double>(nanoseconds) / static_cast<double>(unit->size), unit->name);
    return text;
}

std::string Longest(const PortStats& port) {
    OSADAPT_SPY_KIND longest = kPortCalls.front();
    for (const OSADAPT_SPY_KIND kind : kPortCalls) {
        longest = port.Of(kind).nLongestNs > port.Of(longest).nLongestNs ? kind : longest;
    }
    return std::string(NameOf(longest)) + " " + TimeText(port.Of(longest).nLongestNs);
}

std::string Rate(uint64_t now, uint64_t before, double seconds) {
    const double rate = now < before ? 0 : static_cast<double>(now - before) / seconds;
    return std::to_string(static_cast<uint64_t>(std::min(rate, 1e18)));
}

const PortStats* Find(const HostStats* stats, const std::string& name) {
    if (stats == nullptr) {
        return nullptr;
    }
    const auto found = std::find_if(stats->ports.begin(), stats->ports.end(),
                                    [&](const PortStats& port) { return port.name == name; });
    return found == stats->ports.end() ? nullptr : &*found;
}

Row RowOf(const PortStats& port, const PortStats* before, double seconds) {
    return {Printable(port.name),
            std::to_string(port.bytesIn),
            std::to_string(port.bytesOut),
            before == nullptr ? "-" : Rate(port.bytesIn, before->bytesIn, seconds),
            before == nullptr ? "-" : Rate(port.bytesOut, before->bytesOut, seconds),
            std::to_string(port.Of(OSADAPT_SPY_OPEN).nCalls),
            std::to_string(port.Of(OSADAPT_SPY_READ).nCalls),
            std::to_string(port.Of(OSADAPT_SPY_WRITE).nCalls),
            std::to_string(port.shortWrites),
            std::to_string(Failures(port)),
            Longest(port)};
}

// The first and the last column are texts, those between are numbers.
std::string Laid(const std::vector<Row>& rows) {
    std::vector<size_t> widths(rows.front().size());
    for (const Row& row : rows) {
        for (size_t c = 0; c < row.size(); ++c) {
            widths[c] = std::max(widths[c], ColumnsOf(row[c]));
        }
    }
    std::string text;
    for (size_t r = 0; r < rows.size(); ++r) {
        std::string line = Padded(rows[r].front(), widths.front());
        for (size_t c = 1; c + 1 < widths.size(); ++c) {
            line += "  " + std::string(widths[c] - rows[r][c].size(), ' ') + rows[r][c];
        }
        line += "  " + rows[r].back();
        text += (r == 0 ? Painted(Colour::Dim, line) : line) + "\n";
    }
    return text;
}

std::string CallsText(const PortStats& whole, OSADAPT_SPY_KIND kind) {
    const OSADAPT_SPY_CALLS& calls = whole.Of(kind);
    return std::string(NameOf(kind)) + " " + std::to_string(calls.nCalls) + " (failed " +
           std::to_string(calls.nFailures) + ", longest " + TimeText(calls.nLongestNs) + ")";
}

std::string WholeText(const PortStats& whole) {
    std::string text;
    for (const OSADAPT_SPY_KIND kind : AllCalls()) {
        if (whole.Of(kind).nCalls != 0) {
            text += (text.empty() ? "" : ", ") + CallsText(whole, kind);
        }
    }
    return "adapter: " + (text.empty() ? "no calls" : text) + "\n";
}

} // namespace

std::string StatsTable(const HostStats& stats, const HostStats* before, size_t maxRows) {
    std::vector<Row> rows{{"PORT", "IN", "OUT", "IN/s", "OUT/s", "OPENS", "READS", "WRITES",
                           "SHORT", "FAILED", "LONGEST"}};
    const double seconds =
        before == nullptr
            ? 1
            : std::max(0.001, std::chrono::duration<double>(stats.taken - before->taken).count());
    const size_t room = maxRows > kFrameRows ? maxRows - kFrameRows : 1;
    const size_t shown = std::min(stats.ports.size(), room);
    for (size_t i = 0; i < shown; ++i) {
        const PortStats& port = stats.ports[i];
        rows.push_back(RowOf(port, Find(before, port.name), seconds));
    }
    const size_t left = stats.ports.size() - shown + stats.portsLeftOut;
    return Painted(Colour::Bold, "host " + std::to_string(stats.process)) + " " +
           Printable(stats.processName) + ", adapter " + Printable(stats.adapter) + ", since " +
           TimeForPeople(stats.since) + "\n" + Laid(rows) +
           (left == 0 ? "" : "and " + std::to_string(left) + " more ports\n") +
           WholeText(stats.whole);
}
