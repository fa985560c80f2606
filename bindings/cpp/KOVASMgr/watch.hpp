// SPDX-License-Identifier: MIT
#ifndef KOVASMGR_WATCH_HPP
#define KOVASMGR_WATCH_HPP

#include <memory>
#include <utility>

#include "callback.hpp"
#include "session.hpp"

namespace kovasmgr {
inline namespace v1 {

/// Someone who is told of devices that come and go, made by Library::WatchDevices.
class Watch {
  public:
    /// Nobody is told.
    Watch() = default;
    Watch(Watch&&) noexcept = default;
    Watch& operator=(Watch&& other) noexcept {
        Watch(std::move(other)).Swap(*this);
        return *this;
    }
    Watch(const Watch&) = delete;
    Watch& operator=(const Watch&) = delete;

    /// The watcher does not run any more afterwards; waits for a call under way on another thread.
    ///
    /// Threads: any, and its own watcher.
    /// @note From a receiver it does not wait: a call under way may still end.
    ~Watch() {
        if (m_Watching != nullptr) {
            const detail::CancelShield shield;
            m_Session->Remove(m_Watching);
        }
    }

  private:
    friend class Library;

    Watch(std::shared_ptr<detail::Session> session, Watcher watcher)
        : m_Session(std::move(session)), m_Watching(std::make_shared<detail::Watching>()) {
        m_Watching->watcher = std::move(watcher);
        detail::ThrowIf(m_Session->Add(m_Watching), "watch"); // last: it may run from here on
    }

    Watch(std::shared_ptr<detail::Session> session, Watcher watcher, Snapshot known)
        : m_Session(std::move(session)), m_Watching(std::make_shared<detail::Watching>()) {
        m_Watching->watcher = std::move(watcher);
        m_Watching->before = std::move(known);
        m_Session->AddKnowing(m_Watching);
    }

    void Swap(Watch& other) noexcept {
        m_Session.swap(other.m_Session);
        m_Watching.swap(other.m_Watching);
    }

    std::shared_ptr<detail::Session> m_Session;
    std::shared_ptr<detail::Watching> m_Watching; // null: nobody
};

} // namespace v1
} // namespace kovasmgr

#endif
