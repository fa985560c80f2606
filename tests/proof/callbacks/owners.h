// SPDX-License-Identifier: MIT
#ifndef KOVASMGR_TESTS_PROOF_CALLBACKS_OWNERS_H
#define KOVASMGR_TESTS_PROOF_CALLBACKS_OWNERS_H

#include <atomic>
#include <cstddef>
#include <functional>
#include <vector>

#include "tests/proof/callbacks/slot.h"

/// Threads of a host, each with slots of its own that it takes in use and gives up, in random order
/// and with random pauses. A round is a slot that was called at least once before it was given up.
class Owners {
  public:
    using Step = std::function<void(std::size_t slot)>;

    /// @param begin  registers; the slot is in use already
    /// @param end    un-registers; the slot is given up when it has returned
    Owners(std::vector<Slot>& slots, Step begin, Step end);

    /// Lets so many threads make so many rounds between them, two minutes at most.
    /// @return the rounds made
    long Run(std::size_t threads, long rounds);

    /// Late calls of all slots.
    long Late() const;

  private:
    void Own(std::size_t first, std::size_t count);
    bool Turn(std::size_t slot, bool isInUse);
    void GiveUp(std::size_t slot);

    std::vector<Slot>& m_Slots;
    Step m_Begin;
    Step m_End;
    std::atomic<long> m_Rounds{0};
    std::atomic<bool> m_IsOver{false};
};

#endif
