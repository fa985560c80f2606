// SPDX-License-Identifier: MIT
#ifndef KOVASMGR_BENCH_RUNNING_MANAGER_H
#define KOVASMGR_BENCH_RUNNING_MANAGER_H

#include <string>

/// The bench's own directory in the build tree, with the adapter in its subdirectory "adapter".
std::string BenchDirectory();

/// The adapter without devices, held by the benchmark itself.
class NullAdapter {
  public:
    NullAdapter(int devices, int portsEach);
    ~NullAdapter();
    NullAdapter(const NullAdapter&) = delete;
    NullAdapter& operator=(const NullAdapter&) = delete;

    template <typename Function> Function Resolve(const char* name) const {
        return reinterpret_cast<Function>(Find(name));
    }

  private:
    void* Find(const char* name) const;

    void* m_Handle;
};

/// The library at work on that adapter, all ports open; their identifiers are 1 onwards.
class RunningManager {
  public:
    RunningManager(int devices, int portsEach);
    ~RunningManager();
    RunningManager(const RunningManager&) = delete;
    RunningManager& operator=(const RunningManager&) = delete;

    const NullAdapter& Adapter() const { return m_Adapter; }

  private:
    NullAdapter m_Adapter;
};

#endif
