// SPDX-License-Identifier: MIT
//
// What a full enumeration costs beside clearing and copying its record.
#include <benchmark/benchmark.h>

#include <cstring>
#include <memory>

#include "KOVASMgr.h"
#include "bench/running_manager.h"

namespace {

void ClearAndCopy(benchmark::State& state) {
    const auto from = std::make_unique<_KOVAMGR_DEVICEINFOLIST>();
    const auto to = std::make_unique<_KOVAMGR_DEVICEINFOLIST>();
    for (auto _ : state) {
        std::memset(to.get(), 0, sizeof *to);
        benchmark::DoNotOptimize(to.get());
        benchmark::ClobberMemory();
        std::memcpy(to.get(), from.get(), sizeof *to);
        benchmark::DoNotOptimize(to.get());
        benchmark::ClobberMemory();
    }
}
BENCHMARK(ClearAndCopy)->Name("enumeration/bare");

void Enumerate(benchmark::State& state) {
    const RunningManager manager(64, 16);
    const auto list = std::make_unique<_KOVAMGR_DEVICEINFOLIST>();
    for (auto _ : state) {
        benchmark::DoNotOptimize(KOVAMGR_EnumeratePortInfo(list.get()));
        benchmark::ClobberMemory();
    }
}
BENCHMARK(Enumerate)->Name("enumeration/manager");

} // namespace
