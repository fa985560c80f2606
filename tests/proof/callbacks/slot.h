// SPDX-License-Identifier: MIT
#ifndef KOVASMGR_TESTS_PROOF_CALLBACKS_SLOT_H
#define KOVASMGR_TESTS_PROOF_CALLBACKS_SLOT_H

#include <atomic>

/// A place where callbacks arrive, taken in use and given up by one thread again and again. It sees
/// calls that come after it was given up.
///
/// All atomics are relaxed, so that nothing but the library orders what two threads do here: a
/// race detector then sees a late call also where the counters miss it.
class alignas(64) Slot {
  public:
    /// Before the registration.
    void TakeInUse() {
        m_Calls.store(0, kRelaxed);
        m_IsGivenUp.store(false, kRelaxed);
    }

    /// Calls since it was taken in use.
    long Calls() const { return m_Calls.load(kRelaxed); }

    /// What the callback does first ...
    void Enter() {
        m_Inside.fetch_add(1, kRelaxed);
        m_Calls.fetch_add(1, kRelaxed); // before the end, so that the owner comes in the middle
        NoteLateness();
        ++m_Plain;
    }
    /// ... and last.
    void Leave() {
        ++m_Plain;
        NoteLateness();
        m_Inside.fetch_sub(1, kRelaxed);
    }

    /// When the un-registration has returned: nobody is or comes inside from here on.
    void GiveUp() {
        m_IsGivenUp.store(true, kRelaxed);
        m_Late.fetch_add(m_Inside.load(kRelaxed), kRelaxed);
        ++m_Plain;
    }

    /// Calls that were inside or came when they should not.
    long Late() const { return m_Late.load(kRelaxed); }

  private:
    static constexpr auto kRelaxed = std::memory_order_relaxed;

    void NoteLateness() { m_Late.fetch_add(m_IsGivenUp.load(kRelaxed) ? 1 : 0, kRelaxed); }

    std::atomic<bool> m_IsGivenUp{true};
    std::atomic<int> m_Inside{0};
    std::atomic<long> m_Calls{0};
    std::atomic<long> m_Late{0};
    long m_Plain = 0;
};

/// The stay of one call.
class Visit {
  public:
    explicit Visit(Slot& slot) : m_Slot(slot) { m_Slot.Enter(); }
    ~Visit() { m_Slot.Leave(); }
    Visit(const Visit&) = delete;
    Visit& operator=(const Visit&) = delete;

  private:
    Slot& m_Slot;
};

#endif
