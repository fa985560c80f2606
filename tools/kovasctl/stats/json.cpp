// SPDX-License-Identifier: MIT
#include <nlohmann/json.hpp>

#include "tools/kovasctl/stats/text.h"
#include "tools/kovasctl/time_text.h"

namespace {

using Json = nlohmann::ordered_json;

// Grows when a member is removed or changes its meaning; members may be added at any time.
constexpr int kSchema = 1;

Json ToJson(const OSADAPT_SPY_CALLS& calls) {
    return {{"calls", calls.nCalls},
            {"failures", calls.nFailures},
            {"longest_ns", calls.nLongestNs},
            {"total_ns", calls.nTotalNs}};
}

Json ToJson(const PortStats& port) {
    Json json = {{"name", port.name},
                 {"bytes_in", port.bytesIn},
                 {"bytes_out", port.bytesOut},
                 {"short_writes", port.shortWrites}};
    for (const OSADAPT_SPY_KIND kind : kPortCalls) {
        json[NameOf(kind)] = ToJson(port.Of(kind));
    }
    return json;
}

Json WholeToJson(const HostStats& stats) {
    Json json = {{"file", stats.adapter}, {"ports_left_out", stats.portsLeftOut}};
    for (const OSADAPT_SPY_KIND kind : AllCalls()) {
        json[NameOf(kind)] = ToJson(stats.whole.Of(kind));
    }
    return json;
}

} // namespace

std::string StatsAsJson(const HostStats& stats) {
    Json ports = Json::array();
    for (const PortStats& port : stats.ports) {
        ports.push_back(ToJson(port));
    }
    const Json json = {{"schema", kSchema},
                       {"time", TimeForPrograms(std::chrono::system_clock::now())},
                       {"since", TimeForPrograms(stats.since)},
                       {"pid", stats.process},
                       {"program", stats.processName},
                       {"adapter", WholeToJson(stats)},
                       {"ports", ports}};
    return json.dump(-1, ' ', false, Json::error_handler_t::replace) + "\n";
}
