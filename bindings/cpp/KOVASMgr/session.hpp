// SPDX-License-Identifier: MIT
#ifndef KOVASMGR_SESSION_HPP
#define KOVASMGR_SESSION_HPP

#include <KOVASMgr.h>

#include <algorithm>
#include <atomic>
#include <functional>
#include <memory>
#include <mutex>
#include <system_error>
#include <utility>
#include <vector>

#include "callback.hpp"
#include "devices.hpp"
#include "error.hpp"

namespace kovasmgr {
inline namespace v1 {

/// Is told what came and what went since it was told before, never of nothing. Runs as [watcher],
/// see KOVASMgr.hpp; Library::List shows the new state there.
using Watcher = std::function<void(const Changes&)>;

namespace detail {

inline std::error_code TakeSnapshot(Snapshot& snapshot) {
    const auto list = std::make_unique<_KOVAMGR_DEVICEINFOLIST>(); // 280 KiB: not on a stack
    const std::error_code error = ErrorOf(KOVAMGR_EnumeratePortInfo(list.get()));
    if (!error) {
        snapshot = SnapshotOf(*list);
    }
    return error;
}

struct Watching {
    Watcher watcher;
    Snapshot before; // what it knows of
    std::atomic<bool> hasEnded{false};
};

// From KOVAMGR_Init to KOVAMGR_Release, shared by all objects of that time.
//
// Lock order: the library's device-state lock, m_Mutex, the library's port lock. One callback is
// registered for all watchers and for the whole time, so that none needs the first while it holds
// the second, and none misses a notice because another one has just gone.
class Session {
  public:
    bool IsAlive() const { return m_IsAlive; }
    void End() { m_IsAlive = false; }

    // Begins with what is there now.
    std::error_code Add(const std::shared_ptr<Watching>& watching) {
        const std::lock_guard<std::recursive_mutex> lock(m_Mutex);
        const std::error_code error = TakeSnapshot(watching->before);
        if (!error) {
            m_Watching.push_back(watching);
        }
        return error;
    }

    // Begins with what it knows of, and is told the rest at once.
    void AddKnowing(const std::shared_ptr<Watching>& watching) {
        const std::lock_guard<std::recursive_mutex> lock(m_Mutex);
        m_Watching.push_back(watching);
        CallOrTerminate([&] { TellOne(*watching); });
    }

    // Waits for a call under way on another thread; not from a receiver, which has the port lock.
    void Remove(const std::shared_ptr<Watching>& watching) {
        watching->hasEnded = true;
        if (!ReceiverScope::IsActive()) {
            const std::lock_guard<std::recursive_mutex> lock(m_Mutex);
            Forget();
        }
    }

    void Tell() {
        const std::lock_guard<std::recursive_mutex> lock(m_Mutex);
        Forget();
        const std::vector<std::shared_ptr<Watching>> all = m_Watching; // they may come and go
        for (const std::shared_ptr<Watching>& watching : all) {
            TellOne(*watching);
        }
    }

    static std::shared_ptr<Session> Current() {
        const std::lock_guard<std::mutex> lock(Shared().mutex);
        return Shared().session;
    }

    static void SetCurrent(std::shared_ptr<Session> session) {
        const std::lock_guard<std::mutex> lock(Shared().mutex);
        Shared().session.swap(session);
    }

    static void OnDeviceState(_KOVAMGR_DEV_STATE_TYPE_) {
        CallOrTerminate([] {
            if (const std::shared_ptr<Session> session = Current()) {
                session->Tell();
            }
        });
    }

  private:
    struct SharedSession {
        std::mutex mutex; // nothing is called while it is held
        std::shared_ptr<Session> session;
    };

    // Never destroyed: threads may run while the process exits.
    static SharedSession& Shared() {
        static SharedSession& shared = *new SharedSession;
        return shared;
    }

    // A snapshot each: a watcher may take so long that the next one would get an old state.
    static void TellOne(Watching& watching) {
        Snapshot now;
        if (watching.hasEnded || TakeSnapshot(now)) {
            return;
        }
        const Changes changes = Difference(watching.before, now);
        watching.before = std::move(now);
        if (!changes.Empty()) {
            watching.watcher(changes);
        }
    }

    void Forget() {
        m_Watching.erase(
            std::remove_if(m_Watching.begin(), m_Watching.end(),
                           [](const auto& watching) { return watching->hasEnded.load(); }),
            m_Watching.end());
    }

    std::atomic<bool> m_IsAlive{true};
    std::recursive_mutex m_Mutex; // held while watchers run
    std::vector<std::shared_ptr<Watching>> m_Watching;
};

} // namespace detail
} // namespace v1
} // namespace kovasmgr

#endif
