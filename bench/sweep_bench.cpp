// SPDX-License-Identifier: MIT
//
// What one sweep of the read thread over 1,024 open ports costs above the adapter's own calls.
#include <benchmark/benchmark.h>

#include <cstring>
#include <filesystem>

#include "OSAdapt.h"
#include "bench/running_manager.h"
#include "common/jmutex_guard.h"
#include "tests/harness/manager_probe.h"

namespace {

constexpr int kPorts = 1024;
constexpr std::size_t kBufferSize = 4097;

using Read = decltype(&OS_ADAPT_Read);

void BareReads(benchmark::State& state) {
    const NullAdapter adapter(1, 1);
    const Read read = adapter.Resolve<Read>("OS_ADAPT_Read");
    char buffer[kBufferSize] = {};
    for (auto _ : state) {
        for (int port = 0; port < kPorts; ++port) {
            long length = 0;
            benchmark::DoNotOptimize(read(port, buffer, 4096, &length));
        }
    }
}
BENCHMARK(BareReads)->Name("sweep/bare");

// The least that the task asks for: each read under the lock, into a cleared buffer.
void LockClearRead(benchmark::State& state) {
    const NullAdapter adapter(1, 1);
    const Read read = adapter.Resolve<Read>("OS_ADAPT_Read");
    JMutex mutex;
    mutex.Init();
    char buffer[kBufferSize] = {};
    for (auto _ : state) {
        for (int port = 0; port < kPorts; ++port) {
            JMutexGuard lock(mutex);
            long length = 0;
            std::memset(buffer, 0, sizeof buffer);
            benchmark::DoNotOptimize(buffer);
            benchmark::DoNotOptimize(read(port, buffer, 4096, &length));
        }
    }
}
BENCHMARK(LockClearRead)->Name("sweep/lock_clear_read");

// A manager without its thread, so that nothing else takes the lock.
void ManagerSweep(benchmark::State& state) {
    const NullAdapter adapter(64, 16);
    std::filesystem::current_path(BenchDirectory() + "/adapter");
    CKOVASMgrPort manager;
    if (!manager.LoadDll()) {
        state.SkipWithError("the adapter does not load");
        return;
    }
    for (int port = 1; port <= kPorts; ++port) {
        _PORT_ record;
        record.nPortID = port;
        record.strPortName = "port" + std::to_string(port);
        record.hPort = port;
        ManagerProbe::PreparedPorts(manager).push_back(record);
    }
    ManagerProbe::ReadThreadRun(manager) = 1;
    char buffer[kBufferSize] = {};
    long length = 0;
    for (auto _ : state) {
        ManagerProbe::SweepPorts(manager, buffer, length);
    }
}
BENCHMARK(ManagerSweep)->Name("sweep/manager");

} // namespace
