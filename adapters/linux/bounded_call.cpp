// SPDX-License-Identifier: MIT
#include "adapters/linux/bounded_call.h"

#include <fcntl.h>
#include <pthread.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <termios.h>
#include <unistd.h>

#include <mutex>
#include <optional>

#include "adapters/shared/condition.h"
#include "adapters/shared/unique_fd.h"
#include "adapters/shared/worker_thread.h"

namespace {

using Clock = std::chrono::steady_clock;

// On a machine so busy that the thread was cancelled before it made its call, another one tries with
// more time.
constexpr int kMaxAttempts = 5;
constexpr std::chrono::milliseconds kMoreTime{20};

// A call on its way. The thread is cancelled inside the call only, where it holds no lock and no
// object: how the stack is unwound there does not matter.
class Call {
  public:
    Call(void (*call)(void*), void* argument) : m_Call(call), m_Argument(argument) {}

    bool RunWithin(std::chrono::milliseconds time) {
        WorkerThread thread;
        if (thread.Start("kova-close", Enter, this) != 0) {
            return false;
        }
        if (const auto running = WaitForEnd(time)) {
            pthread_cancel(*running);
        }
        thread.Join();
        return true;
    }

  private:
    static void Enter(void* self) { static_cast<Call*>(self)->Run(); }

    // Without a local object, as the comment above says.
    void Run() {
        NoteBegin();
        // Deferred cancellation would not interrupt a call that is no cancellation point.
        // NOLINTNEXTLINE(cert-pos47-c,concurrency-thread-canceltype-asynchronous): for that call only
        pthread_setcanceltype(PTHREAD_CANCEL_ASYNCHRONOUS, nullptr);
        pthread_setcancelstate(PTHREAD_CANCEL_ENABLE, nullptr);
        m_Call(m_Argument);
        pthread_setcancelstate(PTHREAD_CANCEL_DISABLE, nullptr);
        pthread_setcanceltype(PTHREAD_CANCEL_DEFERRED, nullptr);
        NoteEnd();
    }

    void NoteBegin() {
        const std::lock_guard<std::mutex> lock(m_Mutex);
        m_Thread = pthread_self();
        m_HasBegun = true;
        m_Changed.NotifyAll();
    }

    void NoteEnd() {
        const std::lock_guard<std::mutex> lock(m_Mutex);
        m_HasEnded = true;
        m_Changed.NotifyAll();
    }

    // The time counts from the thread's first step: until then it has not been given a processor.
    // @return the thread when it is still inside the call
    std::optional<pthread_t> WaitForEnd(std::chrono::milliseconds time) {
        std::unique_lock<std::mutex> lock(m_Mutex);
        while (!m_HasBegun) {
            m_Changed.Wait(lock);
        }
        const auto deadline = Clock::now() + time;
        while (!m_HasEnded && Clock::now() < deadline) {
            m_Changed.WaitUntil(lock, deadline);
        }
        return m_HasEnded ? std::nullopt : std::optional<pthread_t>(m_Thread);
    }

    void (*m_Call)(void*);
    void* m_Argument;
    std::mutex m_Mutex; // guards everything below
    Condition m_Changed;
    pthread_t m_Thread{};
    bool m_HasBegun = false;
    bool m_HasEnded = false;
};

struct Replacement {
    int source;
    int target;
};

void Drain(void* terminal) { tcdrain(*static_cast<int*>(terminal)); }

// Closes what the target was, with all the waiting that takes.
void Replace(void* argument) {
    const auto* it = static_cast<Replacement*>(argument);
    syscall(SYS_dup3, it->source, it->target, O_CLOEXEC);
}

bool AreSameFile(int one, int other) {
    struct stat first {};
    struct stat second {};
    return fstat(one, &first) == 0 && fstat(other, &second) == 0 && first.st_dev == second.st_dev &&
           first.st_ino == second.st_ino;
}

} // namespace

bool CallWithin(std::chrono::milliseconds time, void (*call)(void*), void* argument) {
    return Call(call, argument).RunWithin(time);
}

void DrainWithin(int terminal, std::chrono::milliseconds time) {
    CallWithin(time, Drain, &terminal);
}

bool LetGoWithin(int descriptor, std::chrono::milliseconds time) {
    const UniqueFd empty(open("/dev/null", O_RDONLY | O_CLOEXEC | O_NOCTTY));
    if (!empty.IsOpen()) {
        return false;
    }
    Replacement replacement{empty.Get(), descriptor};
    for (int attempt = 0; attempt < kMaxAttempts; ++attempt) {
        if (AreSameFile(empty.Get(), descriptor)) {
            return true;
        }
        if (!CallWithin(time + attempt * kMoreTime, Replace, &replacement)) {
            return false;
        }
    }
    return AreSameFile(empty.Get(), descriptor);
}
