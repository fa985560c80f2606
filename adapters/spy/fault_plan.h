// SPDX-License-Identifier: MIT
#ifndef KOVASMGR_ADAPTERS_SPY_FAULT_PLAN_H
#define KOVASMGR_ADAPTERS_SPY_FAULT_PLAN_H

#include <mutex>
#include <string>
#include <vector>

#include "adapters/spy/fault.h"
#include "adapters/spy/port_book.h"

/// What a plan does to one call: all its delays that fit, and the first other fault.
class CallFate {
  public:
    void Add(const Fault& fault);

    /// Sleeps for the delays, a minute at most. A cancellation point.
    void Wait() const;

    bool IsPassedOn() const;
    bool FailsAfterwards() const { return IsOf(FaultKind::FailWithHandle); }

    /// How many bytes are passed on.
    long Shortened(long length) const;

    /// Of a call that is not passed on.
    int Result() const;

    /// "delay:20ms,fail"; empty when nothing happens to it.
    const std::string& Text() const { return m_Text; }

  private:
    bool IsOf(FaultKind kind) const { return m_Fault != nullptr && m_Fault->kind == kind; }

    std::chrono::nanoseconds m_Delay{0};
    const Fault* m_Fault = nullptr;
    std::string m_Text;
};

/// A plan of faults, with the numbers that calls have so far.
///
/// Threads: any.
class FaultPlan {
  public:
    explicit FaultPlan(std::vector<Fault> faults);

    bool IsEmpty() const { return m_Entries.empty(); }

    /// The next call of a kind.
    /// @param port  null: of no known one
    CallFate Next(OSADAPT_SPY_KIND call, const KnownPort* port);

  private:
    struct Entry {
        Fault fault;
        uint64_t calls = 0; // that it was about so far
    };

    std::mutex m_Mutex; // guards the numbers
    std::vector<Entry> m_Entries;
};

#endif
