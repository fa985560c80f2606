// SPDX-License-Identifier: MIT
#ifndef KOVASCTL_SIM_ARRIVALS_H
#define KOVASCTL_SIM_ARRIVALS_H

#include <deque>
#include <mutex>
#include <string>
#include <vector>

#include "KOVASMgr.h"
#include "tools/kovasctl/wakeup.h"

/// What many open ports have delivered and nobody has fetched yet. A callback is not told which port
/// it is called for, so each port has one of its own.
///
/// One at a time. Threads: the read thread appends, the main thread does the rest.
class SimArrivals {
  public:
    static constexpr size_t kMostPorts = size_t{KOVAMGR_MAX_DEVICES} * KOVAMGR_MAX_PORTS;
    static constexpr size_t kMuch = size_t{8} << 20; // bytes; what comes then is dropped

    struct Arrival {
        std::string port;
        std::string bytes;
    };

    SimArrivals();
    ~SimArrivals();
    SimArrivals(const SimArrivals&) = delete;
    SimArrivals& operator=(const SimArrivals&) = delete;

    /// Readable while there is something.
    int Descriptor() const { return m_Wakeup.Descriptor(); }

    /// @return a callback that is registered for no other port; null when all are
    KOVAMGR_READ_CALLBACK Add(const std::string& port);

    /// When the callback is registered no more, or its port has gone.
    void Remove(KOVAMGR_READ_CALLBACK callback);

    /// In the order in which it came; pieces of one port that follow each other are joined.
    std::deque<Arrival> Take();

    /// How many bytes were dropped since the last call.
    size_t TakeDropped();

    /// For the callbacks alone.
    static void Deliver(size_t slot, const void* data, int length);

  private:
    void Append(size_t slot, const char* data, size_t length);

    static SimArrivals* s_Active;

    std::mutex m_Mutex;               // guards everything below
    std::vector<std::string> m_Ports; // by callback; empty: free
    std::deque<Arrival> m_Queue;
    size_t m_Waiting = 0;
    size_t m_Dropped = 0;
    Wakeup m_Wakeup;
};

#endif
