// SPDX-License-Identifier: MIT
#ifndef KOVASMGR_LIBRARY_HPP
#define KOVASMGR_LIBRARY_HPP

#include <KOVASMgr.h>

#include <memory>
#include <string>
#include <system_error>
#include <utility>

#include "callback.hpp"
#include "devices.hpp"
#include "error.hpp"
#include "port.hpp"
#include "session.hpp"
#include "watch.hpp"

namespace kovasmgr {
inline namespace v1 {

/// The initialised library: KOVAMGR_Init at the start, KOVAMGR_Release at the end.
class Library {
  public:
    /// Holds nothing.
    Library() = default;

    /// Initialises. The adapter is looked for as KOVASMgr.h says: in the current directory first.
    ///
    /// @param logDirectory  an existing directory for "KOVASMgr.log"
    /// @throw std::system_error  AlreadyInitialised: somebody in the process has, nothing changes;
    ///                           BadArgument: no such directory; AdapterFailed: see the log
    ///
    /// Threads: one, while no other is inside the library; not from a callable.
    explicit Library(const std::string& logDirectory)
        : m_Session(std::make_shared<detail::Session>()) {
        if (KOVAMGR_GetPortState(0) != KOVAMGR_ERR_NOT_INIT) {
            throw std::system_error(Errc::AlreadyInitialised, "KOVAMGR_Init");
        }
        detail::ThrowIf(detail::ErrorOf(KOVAMGR_Init(logDirectory.c_str())), "KOVAMGR_Init");
        detail::Session::SetCurrent(m_Session);
        KOVAMGR_RegisterDeviceStateProcessCallback(&detail::Session::OnDeviceState);
    }

    Library(Library&&) noexcept = default;
    Library& operator=(Library&& other) noexcept {
        Library(std::move(other)).m_Session.swap(m_Session);
        return *this;
    }
    Library(const Library&) = delete;
    Library& operator=(const Library&) = delete;

    /// Releases: closes every port, ends every callable. Takes about 7 seconds at most, save for
    /// watchers, which are waited for without a limit.
    ///
    /// Threads: one, while no other is inside the library; not from a callable.
    /// @note From a callable it does nothing but write a line to the log: the library stays
    ///       initialised for the rest of the process.
    ~Library() {
        if (m_Session == nullptr) {
            return;
        }
        KOVAMGR_Release();
        if (KOVAMGR_GetPortState(0) == KOVAMGR_ERR_NOT_INIT) {
            m_Session->End();
            detail::Session::SetCurrent(nullptr);
        }
    }

    /// What is attached now.
    ///
    /// @throw std::system_error  NotInitialised
    ///
    /// Threads: any, and any callable.
    Snapshot List() const {
        CheckAlive("list");
        Snapshot snapshot;
        detail::ThrowIf(detail::TakeSnapshot(snapshot), "list");
        return snapshot;
    }

    /// Opens a port.
    ///
    /// @param port      PortInfo::id of a snapshot
    /// @param receiver  gets what arrives, from the first byte on; empty: it is discarded
    /// @throw std::system_error  NotInitialised, TooManyPorts; BadArgument: no such port;
    ///                           AdapterFailed: busy, no permission ..., see the log
    ///
    /// Threads: any, and any callable. Opening and closing one port on several threads at the same
    /// time is for the host to put in order.
    Port Open(int port, Receiver receiver = {}) const {
        CheckAlive("open");
        return {Port::AtOnce(), m_Session, port, std::move(receiver)};
    }

    /// Makes a Port that is not open yet, for Port::Open. The port is not looked at.
    ///
    /// @throw std::system_error  NotInitialised, TooManyPorts
    ///
    /// Threads: any, and any callable.
    Port Prepare(int port, Receiver receiver = {}) const {
        CheckAlive("prepare");
        return {m_Session, port, std::move(receiver)};
    }

    /// Tells a watcher what comes and goes from now on, perhaps before this has returned. Watchers
    /// are told in order of their making.
    ///
    /// @param watcher  not empty
    /// @throw std::system_error  BadArgument, NotInitialised, NotFromReceiver
    ///
    /// Threads: any, and any watcher; not from a receiver. Waits for watchers that are running on
    /// another thread.
    Watch WatchDevices(Watcher watcher) const {
        CheckWatcher(watcher);
        return {m_Session, std::move(watcher)};
    }

    /// The same, but also tells what has changed since an earlier snapshot, if anything, on the
    /// calling thread before it returns. So nothing is missed between a snapshot and the Watch; with
    /// an empty snapshot, all that is there is told as having come.
    ///
    /// @param known  what the watcher knows of
    Watch WatchDevices(Watcher watcher, Snapshot known) const {
        CheckWatcher(watcher);
        return {m_Session, std::move(watcher), std::move(known)};
    }

  private:
    void CheckAlive(const char* what) const {
        if (m_Session == nullptr || !m_Session->IsAlive()) {
            throw std::system_error(Errc::NotInitialised, what);
        }
    }

    void CheckWatcher(const Watcher& watcher) const {
        CheckAlive("watch");
        detail::ThrowIf(watcher ? std::error_code() : Errc::BadArgument, "watch");
        detail::ThrowIf(
            detail::ReceiverScope::IsActive() ? Errc::NotFromReceiver : std::error_code(), "watch");
    }

    std::shared_ptr<detail::Session> m_Session; // null: holds nothing
};

} // namespace v1
} // namespace kovasmgr

#endif
