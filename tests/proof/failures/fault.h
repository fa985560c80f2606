// SPDX-License-Identifier: MIT
#ifndef KOVASMGR_TESTS_PROOF_FAILURES_FAULT_H
#define KOVASMGR_TESTS_PROOF_FAILURES_FAULT_H

#include <string>

/// What can be made to fail. One bit each, so that a step of the script can name several.
enum Trouble : unsigned {
    kNoMemory = 1,          ///< an allocation, of whichever kind and thread
    kAdapterFails = 2,      ///< one of the adapter's seven functions but the read
    kAdapterThrows = 4,     ///< the same, with an exception of its own
    kAdapterBadAlloc = 8,   ///< the same, with std::bad_alloc
    kAdapterReadFails = 16, ///< the adapter's read
    kAdapterReadThrows = 32,
    kNoThread = 64,      ///< the start of a thread
    kLogNotOpened = 128, ///< fopen of the log
    kLogNotWritten = 256 ///< fputs and fflush of the log
};
constexpr unsigned kAdapterExceptions = kAdapterThrows | kAdapterBadAlloc;
constexpr unsigned kAdapterTroubles = kAdapterFails | kAdapterExceptions;
constexpr unsigned kAdapterReadTroubles = kAdapterReadFails | kAdapterReadThrows;

enum class Manner {
    kOnce,      ///< the nth event fails
    kFromThenOn ///< the nth and all later ones
};

/// The nth event of one kind, counted from 1 over all threads that are not spared.
struct Fault {
    Trouble trouble;
    Manner manner;
    long nth;

    std::string Text() const;
};

/// Counts events and lets them fail from now on, until the next call.
void ArmFault(const Fault& fault);
void DisarmFault();

/// Asked by whoever can fail: counts the event if it is of the armed kind. Allocates nothing.
/// @return whether it must fail.
bool Strikes(unsigned troubles);

/// The armed kind; meaningful when Strikes says so.
Trouble ArmedTrouble();

/// Events that have failed since the fault was armed.
long StrikeCount();

/// While it lives, what the calling thread does is neither counted nor made to fail.
class Spared {
  public:
    Spared();
    ~Spared();
    Spared(const Spared&) = delete;
    Spared& operator=(const Spared&) = delete;

  private:
    bool m_Before;
};

/// Undoes Spared for a scope: a call of the library by a thread of the test.
class NotSpared {
  public:
    NotSpared();
    ~NotSpared();
    NotSpared(const NotSpared&) = delete;
    NotSpared& operator=(const NotSpared&) = delete;

  private:
    bool m_Before;
};

#endif
