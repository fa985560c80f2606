// SPDX-License-Identifier: MIT
#ifndef KOVASMGR_ADAPTERS_STATE_NOTIFIER_H
#define KOVASMGR_ADAPTERS_STATE_NOTIFIER_H

#include <cstdint>
#include <mutex>

#include "OSAdapt.h"
#include "adapters/shared/answer_book.h"
#include "adapters/shared/condition.h"
#include "adapters/shared/port_table.h"
#include "adapters/shared/worker_thread.h"

/// Tells the registered callback, on a thread of its own, how the attached ports change, and
/// answers enumerations so that each notice finds what it announced.
///
/// Threads: any, except where stated. No lock is held while the callback runs.
class StateNotifier {
  public:
    /// Takes the callback, replacing an earlier one, and starts the thread. Never waits for a
    /// notice.
    /// @return 0, or an errno value; nothing is registered then.
    int Register(OS_ADAPT_STATUS_CALLBACK callback);

    /// Forgets the callback. Returns when no notice runs or will start and the thread has ended;
    /// called from the notice itself it does not wait, and the thread ends after the notice.
    /// Waiting is a cancellation point.
    void UnRegister();

    /// For the end of the process or of the library: as UnRegister, but a notice that is running is
    /// left alone. Frees all memory.
    void Abandon();

    /// Records what is attached from now on.
    /// @return a ticket for IsTold.
    uint64_t Publish(PortTable truth);

    /// Whether the listener has been told of everything up to this ticket, or nobody listens.
    bool IsTold(uint64_t ticket);

    /// Whether a callback is registered.
    bool IsListenedTo();

    /// Fills a zeroed list for an enumeration.
    void Answer(_OS_ADAPT_DEVICEPORTLIST& list);

    /// Is called after each notice, on the notifying thread. To be set before the first Register.
    void SetToldHook(void (*hook)(void* argument), void* argument);

  private:
    static void Enter(void* self);
    void Run();
    void TellFirstStep(std::unique_lock<std::mutex>& lock);

    void (*m_ToldHook)(void*) = nullptr;
    void* m_ToldHookArgument = nullptr;
    std::mutex m_Mutex; // guards everything below
    Condition m_Changed;
    AnswerBook m_Book;
    WorkerThread m_Thread;
    OS_ADAPT_STATUS_CALLBACK m_Callback = nullptr;
    bool m_Running = false; // the thread is inside Run
    bool m_Telling = false; // the callback is running
    bool m_Stop = false;
};

#endif
