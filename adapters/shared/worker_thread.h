// SPDX-License-Identifier: MIT
#ifndef KOVASMGR_ADAPTERS_WORKER_THREAD_H
#define KOVASMGR_ADAPTERS_WORKER_THREAD_H

#include <pthread.h>

/// A thread of the adapter's own: 2 MiB of stack (a notice needs 1 MiB), no signals (they are the
/// host's) and no cancellation.
///
/// Threads: the owner serialises Start, Join and IsSelf with a lock of its own, or by being one
/// thread.
class WorkerThread {
  public:
    using Body = void (*)(void* argument);

    WorkerThread() = default;
    WorkerThread(const WorkerThread&) = delete;
    WorkerThread& operator=(const WorkerThread&) = delete;

    /// @param name      at most 15 bytes, shown by ps and debuggers; of static lifetime
    /// @param body      runs on the new thread; must not throw
    /// @return 0, or an errno value.
    int Start(const char* name, Body body, void* argument);

    /// Waits for the end of the body. Does nothing when no thread was started since the last Join.
    void Join();

    bool IsSelf() const;

  private:
    static void* Enter(void* self);

    pthread_t m_Handle{};
    bool m_Started = false;
    const char* m_Name = "";
    Body m_Body = nullptr;
    void* m_Argument = nullptr;
};

#endif
