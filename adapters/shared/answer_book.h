// SPDX-License-Identifier: MIT
#ifndef KOVASMGR_ADAPTERS_ANSWER_BOOK_H
#define KOVASMGR_ADAPTERS_ANSWER_BOOK_H

#include <chrono>
#include <cstdint>
#include <list>
#include <memory>

#include "OSAdapt.h"
#include "adapters/shared/port_table.h"

/// Keeps what is true apart from what was last answered, and plans the notices that lead from one
/// to the other.
///
/// The manager finds removals and arrivals by comparing an enumeration with its own book, and
/// misreads one that holds both. So the way is cut into steps, each a run of removals or a run of
/// arrivals with a table of its own. While a step is being told, enumerations are answered from its
/// table; between steps, from the last one told. While nobody is listening there are no steps, and
/// enumerations are answered with what is true.
///
/// Threads: none of its own and no lock; StateNotifier guards it.
class AnswerBook {
  public:
    using Instant = std::chrono::steady_clock::time_point;

    /// What arrives within this time of the last event is told together ...
    static constexpr std::chrono::milliseconds kQuiet{10};
    /// ... but not later than this after the first.
    static constexpr std::chrono::milliseconds kLongest{40};

    /// Records what is true from now on and, while somebody listens, plans the steps to it.
    /// @return a ticket for IsTold.
    uint64_t SetTruth(PortTable truth, Instant now);

    /// Somebody listens. Steps are planned from the last answer, if there was one: nothing that
    /// happened since is lost.
    void StartTelling(Instant now);

    /// Nobody listens any more: steps and last answer are dropped. A step that is being told stays
    /// the answer to the end.
    void StopTelling();

    /// Forgets everything, also what is true.
    void Clear();

    bool HasStep() const { return !m_Steps.empty(); }

    /// When the first step is to be told. At once, if another stands behind it: nothing can join
    /// it. Only with HasStep().
    Instant FirstStepDue() const;

    /// From here to EndStep the first step's table is the answer. Only with HasStep().
    _OS_ADAPT_DEVICESTATUS_TYPE BeginStep();
    void EndStep();

    /// The table for an enumeration, which is the last answer from now on.
    std::shared_ptr<const PortTable> Answer();

    /// Whether everything up to this ticket has been told (or nobody listens).
    bool IsTold(uint64_t ticket) const;

  private:
    struct Step {
        _OS_ADAPT_DEVICESTATUS_TYPE status;
        std::shared_ptr<const PortTable> table;
        uint64_t firstTicket;
        Instant firstEvent;
        Instant lastEvent;
    };

    const std::shared_ptr<const PortTable>& Truth();
    const PortTable& LastPlanned() const;
    void PlanSteps(uint64_t ticket, Instant now);
    void AddEvent(_OS_ADAPT_DEVICESTATUS_TYPE status, std::shared_ptr<const PortTable> table,
                  uint64_t ticket, Instant now);
    void CollapseSteps(Instant now);

    bool m_Telling = false;
    uint64_t m_LastTicket = 0;
    std::shared_ptr<const PortTable> m_Truth;      // null: nothing recorded yet
    std::shared_ptr<const PortTable> m_LastAnswer; // null: nobody has asked yet
    std::list<Step> m_Steps;
    std::list<Step> m_Current; // the step that is being told, if any; the answer until EndStep
};

#endif
