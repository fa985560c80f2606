// SPDX-License-Identifier: MIT
//
// What a log line costs beside formatting the same line and writing it.
#include <benchmark/benchmark.h>
#include <fcntl.h>
#include <unistd.h>

#include <cstdio>

#include "KOVASMgrLog.h"
#include "bench/running_manager.h"

namespace {

void FormatAndWrite(benchmark::State& state) {
    const std::string path = BenchDirectory() + "/plain.log";
    const int file = open(path.c_str(), O_CREAT | O_TRUNC | O_WRONLY | O_APPEND, 0600);
    for (auto _ : state) {
        char line[4500];
        const int length = std::snprintf(line, sizeof line,
                                         "[%04d-%02d-%02d %02d:%02d:%02d:%03d] %s"
                                         "Open %s succeed.\n",
                                         2026, 1, 31, 23, 59, 59, 123, "INFO:", "COM1");
        if (write(file, line, static_cast<std::size_t>(length)) != length) {
            state.SkipWithError("the file cannot be written");
            break;
        }
    }
    close(file);
    unlink(path.c_str());
}
BENCHMARK(FormatAndWrite)->Name("log/bare");

void InfoLog(benchmark::State& state) {
    const std::string path = BenchDirectory() + "/KOVASMgr.log";
    if (KOVASMGR_LOG_INIT(BenchDirectory().c_str()) == 0) {
        state.SkipWithError("the log cannot be opened");
        return;
    }
    for (auto _ : state) {
        benchmark::DoNotOptimize(INFO_LOG("Open %s succeed.", "COM1"));
    }
    if (truncate(path.c_str(), 0) != 0) {
        state.SkipWithError("the log cannot be emptied");
    }
}
BENCHMARK(InfoLog)->Name("log/info");

} // namespace
