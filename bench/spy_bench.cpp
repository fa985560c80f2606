// SPDX-License-Identifier: MIT
//
// What the spy costs above the call that it passes on.
#include <benchmark/benchmark.h>
#include <dlfcn.h>
#include <stdlib.h>

#include <stdexcept>
#include <string>

#include "OSAdapt.h"
#include "bench/running_manager.h"

namespace {

constexpr char kData[] = "AT+CSQ\r";
constexpr long kLength = sizeof kData - 1;

/// The spy in front of the adapter without devices; with one port open, whose handle is 1.
class SpyLibrary {
  public:
    explicit SpyLibrary(const char* stats) {
        setenv("KOVASMGR_SPY_ADAPTER", (BenchDirectory() + "/adapter").c_str(), 1);
        setenv("KOVASMGR_SPY_STATS", stats, 1);
        m_Library = dlopen(KOVASMGR_BENCH_SPY, RTLD_NOW | RTLD_LOCAL);
        if (m_Library == nullptr) {
            throw std::runtime_error(dlerror());
        }
        int handle = OS_ADAPT_NO_HANDLE;
        if (Find<decltype(&OS_ADAPT_OpenPort)>("OS_ADAPT_OpenPort")("port1", &handle) !=
            OS_ADAPT_OK) {
            throw std::runtime_error("the spy passes nothing on");
        }
        m_Handle = handle;
    }
    ~SpyLibrary() { dlclose(m_Library); }
    SpyLibrary(const SpyLibrary&) = delete;
    SpyLibrary& operator=(const SpyLibrary&) = delete;

    template <typename Function> Function Find(const char* name) const {
        return reinterpret_cast<Function>(dlsym(m_Library, name));
    }
    int Handle() const { return m_Handle; }

  private:
    void* m_Library;
    int m_Handle = OS_ADAPT_NO_HANDLE;
};

void Write(benchmark::State& state, decltype(&OS_ADAPT_Write) write, int handle) {
    for (auto _ : state) {
        long written = 0;
        benchmark::DoNotOptimize(write(handle, kData, kLength, &written));
        benchmark::DoNotOptimize(written);
    }
}

void Read(benchmark::State& state, decltype(&OS_ADAPT_Read) read, int handle) {
    char buffer[4096];
    for (auto _ : state) {
        long count = 0;
        benchmark::DoNotOptimize(read(handle, buffer, sizeof buffer, &count));
        benchmark::DoNotOptimize(count);
    }
}

void BareWrite(benchmark::State& state) {
    const NullAdapter adapter(1, 1);
    Write(state, adapter.Resolve<decltype(&OS_ADAPT_Write)>("OS_ADAPT_Write"), 1);
}
BENCHMARK(BareWrite)->Name("spy/write/bare");

void BareRead(benchmark::State& state) {
    const NullAdapter adapter(1, 1);
    Read(state, adapter.Resolve<decltype(&OS_ADAPT_Read)>("OS_ADAPT_Read"), 1);
}
BENCHMARK(BareRead)->Name("spy/read/bare");

void SpiedWrite(benchmark::State& state, const char* stats) {
    const SpyLibrary spy(stats);
    Write(state, spy.Find<decltype(&OS_ADAPT_Write)>("OS_ADAPT_Write"), spy.Handle());
}
BENCHMARK_CAPTURE(SpiedWrite, off, "off")->Name("spy/write/off");
BENCHMARK_CAPTURE(SpiedWrite, counters, "on")->Name("spy/write/counters");

void SpiedRead(benchmark::State& state, const char* stats) {
    const SpyLibrary spy(stats);
    Read(state, spy.Find<decltype(&OS_ADAPT_Read)>("OS_ADAPT_Read"), spy.Handle());
}
BENCHMARK_CAPTURE(SpiedRead, off, "off")->Name("spy/read/off");
BENCHMARK_CAPTURE(SpiedRead, counters, "on")->Name("spy/read/counters");

} // namespace
