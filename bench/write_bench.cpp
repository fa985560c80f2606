// SPDX-License-Identifier: MIT
//
// What a write costs above the adapter's own call.
#include <benchmark/benchmark.h>

#include "KOVASMgr.h"
#include "OSAdapt.h"
#include "bench/running_manager.h"
#include "common/jmutex_guard.h"

namespace {

constexpr char kData[] = "AT+CSQ\r";
constexpr long kLength = sizeof kData - 1;

void BareWrite(benchmark::State& state) {
    const NullAdapter adapter(1, 1);
    const auto write = adapter.Resolve<decltype(&OS_ADAPT_Write)>("OS_ADAPT_Write");
    for (auto _ : state) {
        long written = 0;
        benchmark::DoNotOptimize(write(1, kData, kLength, &written));
        benchmark::DoNotOptimize(written);
    }
}
BENCHMARK(BareWrite)->Name("write/bare");

// The part of it that the lock has.
void LockAlone(benchmark::State& state) {
    JMutex mutex;
    mutex.Init();
    for (auto _ : state) {
        JMutexGuard lock(mutex);
        benchmark::ClobberMemory();
    }
}
BENCHMARK(LockAlone)->Name("write/lock");

// To the last port of as many devices with as many ports each.
void ManagerWrite(benchmark::State& state) {
    const int devices = static_cast<int>(state.range(0));
    const int portsEach = static_cast<int>(state.range(1));
    const RunningManager manager(devices, portsEach);
    for (auto _ : state) {
        long error = 0;
        benchmark::DoNotOptimize(KOVAMGR_Write(devices * portsEach, kData, kLength, 0, &error));
    }
}
BENCHMARK(ManagerWrite)->Name("write/manager")->Args({1, 1})->Args({64, 16});

} // namespace
