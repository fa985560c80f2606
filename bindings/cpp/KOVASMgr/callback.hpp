// SPDX-License-Identifier: MIT
#ifndef KOVASMGR_CALLBACK_HPP
#define KOVASMGR_CALLBACK_HPP

#include <pthread.h>

#include <exception>
#include <utility>

#if defined(__GLIBCXX__)
#include <cxxabi.h>
#endif

namespace kovasmgr {
inline namespace v1 {
namespace detail {

// Runs a callable of the host's, which must not throw into the library. Not noexcept: thread
// cancellation, by which the library ends a receiver that hangs, unwinds through here.
template <typename Call> void CallOrTerminate(Call&& call) {
    try {
        std::forward<Call>(call)();
    }
#if defined(__GLIBCXX__)
    catch (abi::__forced_unwind&) {
        throw;
    }
#endif
    catch (...) {
        std::terminate();
    }
}

// Marks the thread while a receiver runs on it.
class ReceiverScope {
  public:
    ReceiverScope() { ++Depth(); }
    ~ReceiverScope() { --Depth(); }
    ReceiverScope(const ReceiverScope&) = delete;
    ReceiverScope& operator=(const ReceiverScope&) = delete;

    static bool IsActive() { return Depth() > 0; }

  private:
    static int& Depth() {
        static thread_local int depth = 0;
        return depth;
    }
};

// Keeps thread cancellation out of destructors, which it must not unwind.
class CancelShield {
  public:
    CancelShield() { pthread_setcancelstate(PTHREAD_CANCEL_DISABLE, &m_Before); }
    ~CancelShield() { pthread_setcancelstate(m_Before, nullptr); }
    CancelShield(const CancelShield&) = delete;
    CancelShield& operator=(const CancelShield&) = delete;

  private:
    int m_Before = PTHREAD_CANCEL_ENABLE;
};

} // namespace detail
} // namespace v1
} // namespace kovasmgr

#endif
