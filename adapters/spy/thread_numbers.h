// SPDX-License-Identifier: MIT
#ifndef KOVASMGR_ADAPTERS_SPY_THREAD_NUMBERS_H
#define KOVASMGR_ADAPTERS_SPY_THREAD_NUMBERS_H

#include <pthread.h>

#include <atomic>
#include <cstdint>

/// Gives each thread a number of its own, 1 onwards in the order in which they ask. Not a
/// thread_local variable: those of a library that is unloaded and loaded again are costly, and leak
/// checkers stumble over them.
///
/// Threads: any.
class ThreadNumbers {
  public:
    ThreadNumbers() { m_HasKey = pthread_key_create(&m_Key, nullptr) == 0; }
    ~ThreadNumbers() {
        if (m_HasKey) {
            pthread_key_delete(m_Key);
        }
    }
    ThreadNumbers(const ThreadNumbers&) = delete;
    ThreadNumbers& operator=(const ThreadNumbers&) = delete;

    /// The calling thread's; 0 when the system has no room for such numbers.
    intptr_t Own() {
        if (!m_HasKey) {
            return 0;
        }
        auto number = reinterpret_cast<intptr_t>(pthread_getspecific(m_Key));
        if (number == 0) {
            number = ++m_Last;
            // NOLINTNEXTLINE(performance-no-int-to-ptr): what is kept for a thread is a pointer.
            pthread_setspecific(m_Key, reinterpret_cast<void*>(number));
        }
        return number;
    }

  private:
    pthread_key_t m_Key{};
    bool m_HasKey = false;
    std::atomic<intptr_t> m_Last{0};
};

#endif
