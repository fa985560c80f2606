// SPDX-License-Identifier: MIT
//
//     kovasmgr_idle_bench [PORTS] [ROUNDS]
//
// What the read thread costs while nothing arrives: with all ports open, with one port open, and
// beside them a thread that polls one descriptor and sleeps as long. The three take turns of a
// quarter of a second, so that what else the machine does meets all of them; each figure is the
// median of its turns.
#include <poll.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <exception>
#include <thread>
#include <vector>

#include "bench/bare_loop.h"
#include "bench/terminal_host.h"

namespace {

using Clock = std::chrono::steady_clock;
using Milliseconds = std::chrono::milliseconds;

// Microseconds of a processor in a second.
double CostNow(const MeasuredThread& thread) {
    std::this_thread::sleep_for(Milliseconds(30)); // what came before has settled
    const double before = thread.Seconds();
    const auto start = Clock::now();
    std::this_thread::sleep_for(Milliseconds(250));
    const double used = thread.Seconds() - before;
    return used / std::chrono::duration<double>(Clock::now() - start).count() * 1e6;
}

double Median(std::vector<double> values) {
    std::sort(values.begin(), values.end());
    return values[values.size() / 2];
}

void Measure(const TerminalHost& host, int rounds) {
    int ends[2] = {-1, -1};
    if (pipe(ends) != 0) {
        return;
    }
    BareLoop bare([end = ends[0]] {
        pollfd entry{end, POLLIN, 0};
        poll(&entry, 1, 0);
    });
    std::vector<double> all;
    std::vector<double> one;
    std::vector<double> loop;
    for (int round = 0; round < rounds; ++round) {
        all.push_back(CostNow(host.ReadThread()));
        host.CloseAllButFirst();
        one.push_back(CostNow(host.ReadThread()));
        bare.Switch(true);
        loop.push_back(CostNow(bare.Thread()));
        bare.Switch(false);
        host.OpenAllButFirst();
    }
    std::printf("idle ports=%d us_per_second=%.0f one_port=%.0f bare_loop=%.0f "
                "to_one_port=%.3f to_bare_loop=%.3f\n",
                host.Ports(), Median(all), Median(one), Median(loop), Median(all) / Median(one),
                Median(all) / Median(loop));
}

} // namespace

int main(int count, char** arguments) {
    try {
        const TerminalHost host(NumberArgument(count, arguments, 1, 1));
        Measure(host, NumberArgument(count, arguments, 2, 9));
    } catch (const std::exception& error) {
        std::fprintf(stderr, "%s\n", error.what());
        return 1;
    }
    return 0;
}
