// SPDX-License-Identifier: MIT
#ifndef KOVASMGR_PORT_HPP
#define KOVASMGR_PORT_HPP

#include <KOVASMgr.h>

#include <algorithm>
#include <cstddef>
#include <memory>
#include <string>
#include <system_error>
#include <utility>

#include "byte_view.hpp"
#include "callback.hpp"
#include "error.hpp"
#include "session.hpp"
#include "slots.hpp"

namespace kovasmgr {
inline namespace v1 {

/// Most bytes of one call of KOVAMGR_Write: a larger count could not be told from a result code.
constexpr std::size_t kMaxWrite = 16384;

/// What became of a write.
struct Written {
    std::size_t count = 0;     ///< bytes that were sent
    std::size_t requested = 0; ///< bytes that were to be sent
    std::error_code error;     ///< why no more were sent; none: the port took no more in time

    bool Whole() const { return count == requested && !error; }
};

/// A port, made by Library::Open or Library::Prepare. Several objects may have the same port open;
/// the last one closes it.
///
/// Its receiver may run before the call that opens it has returned. One that uses its own Port finds
/// it complete when that is made in place (Port port = library.Open(...), or a member by its
/// initialiser). A Port that is assigned or moved is prepared first, put where it belongs, and
/// opened there.
class Port {
  public:
    /// Holds no port.
    Port() = default;
    Port(Port&& other) noexcept
        : m_Session(std::move(other.m_Session)), m_Slot(other.m_Slot),
          m_Id(std::exchange(other.m_Id, -1)), m_IsOpen(std::exchange(other.m_IsOpen, false)) {}
    Port& operator=(Port&& other) noexcept {
        Port(std::move(other)).Swap(*this);
        return *this;
    }
    Port(const Port&) = delete;
    Port& operator=(const Port&) = delete;

    /// Closes the port if it is open. The receiver does not run any more afterwards; waits for a
    /// call of it under way on another thread.
    ///
    /// Threads: any, and any callable, also its own receiver.
    ~Port() {
        const detail::CancelShield shield;
        if (Close()) {
            Detach(); // it could not be closed; nobody listens any more
        }
    }

    /// Whether it is open. The port's device may be gone all the same.
    bool IsOpen() const { return m_IsOpen; }

    /// The identifier, -1 when no port is held.
    int Id() const { return m_Id; }

    /// Opens a prepared port.
    ///
    /// @return no error: open, now or before. NotOpen: no port is held. NotInitialised.
    ///         BadArgument: the port is gone. AdapterFailed: busy, no permission ..., see the log.
    ///         After a failure the port is still prepared.
    ///
    /// Threads: any, and any callable.
    std::error_code Open() {
        if (m_Session == nullptr) {
            return Errc::NotOpen;
        }
        if (!m_Session->IsAlive()) {
            return Errc::NotInitialised;
        }
        if (m_IsOpen) {
            return {};
        }
        SetOpen(true); // from the registration on everything may be in use by the receiver
        const int result = RegisterAndOpen();
        if (result != KOVAMGR_OK) {
            KOVAMGR_UnRegisterCommDataReadCallback(Trampoline(), m_Id);
            SetOpen(false);
        }
        return detail::ErrorOf(result);
    }

    /// Sends bytes, in calls of at most 16,384. Ends at the first call that does not send all it
    /// was given; nothing is tried again.
    ///
    /// @return how far it came: complete, or short without an error (the far end does not keep
    ///         up), or short with one: NotOpen, AdapterFailed, BadArgument (the port is gone),
    ///         NotInitialised. Sending nothing is complete.
    /// @note A call may take as long as the adapter does (a second, usually) and holds up all ports.
    ///
    /// Threads: any number at a time, and any callable. Calls of different threads may alternate.
    [[nodiscard]] Written Write(ByteView bytes) const {
        Written written{0, bytes.size(), {}};
        while (written.count < bytes.size()) {
            const ByteView part = bytes.Part(written.count, kMaxWrite);
            const std::size_t sent = WritePart(part, written.error);
            written.count += sent;
            if (sent < part.size()) {
                break;
            }
        }
        return written;
    }

    /// Closes the port, as the destructor does, and tells.
    ///
    /// @return AdapterFailed: the port is still open and its receiver still there. Else no error,
    ///         and no port is held; so too when none was, or the device is gone.
    ///
    /// Threads: any, and any callable, also its own receiver.
    std::error_code Close() {
        if (m_IsOpen && m_Session->IsAlive() && detail::Slots::Get().IsTheLast(m_Slot) &&
            KOVAMGR_Close(m_Id) == KOVAMGR_ERR_OSADAPT) {
            return Errc::AdapterFailed;
        }
        Detach();
        return {};
    }

  private:
    friend class Library;

    // Prepared.
    Port(std::shared_ptr<detail::Session> session, int id, Receiver receiver)
        : m_Slot(detail::Slots::Get().Take(session.get(), id, std::move(receiver))) {
        if (m_Slot == detail::Slots::kNone) {
            throw std::system_error(Errc::TooManyPorts, What(id));
        }
        m_Session = std::move(session);
        m_Id = id;
    }

    // Open.
    struct AtOnce {};
    Port(AtOnce, std::shared_ptr<detail::Session> session, int id, Receiver receiver)
        : Port(std::move(session), id, std::move(receiver)) {
        detail::ThrowIf(Open(), What(id)); // the object is destroyed then
    }

    static std::string What(int id) { return "port " + std::to_string(id); }

    KOVAMGR_READ_CALLBACK Trampoline() const { return detail::Slots::Trampoline(m_Slot); }

    void SetOpen(bool isOpen) {
        m_IsOpen = isOpen;
        detail::Slots::Get().SetOpen(m_Slot, isOpen);
    }

    // Does not touch the object after the opening, by which a receiver may have destroyed it.
    int RegisterAndOpen() const {
        const int id = m_Id;
        int result = KOVAMGR_OK;
        if (detail::Slots::Get().HasReceiver(m_Slot)) { // first: what arrives without one is lost
            result = KOVAMGR_RegisterCommDataReadCallback(Trampoline(), id);
        }
        return result == KOVAMGR_OK ? KOVAMGR_Open(id) : result;
    }

    void Swap(Port& other) noexcept {
        m_Session.swap(other.m_Session);
        std::swap(m_Slot, other.m_Slot);
        std::swap(m_Id, other.m_Id);
        std::swap(m_IsOpen, other.m_IsOpen);
    }

    std::size_t WritePart(ByteView part, std::error_code& error) const {
        if (!m_IsOpen) {
            error = Errc::NotOpen;
            return 0;
        }
        if (!m_Session->IsAlive()) {
            error = Errc::NotInitialised;
            return 0;
        }
        long reason = KOVAMGR_ERR_OSADAPT;
        const int result =
            KOVAMGR_Write(m_Id, part.data(), static_cast<long>(part.size()), 0, &reason);
        if (result < 0 || static_cast<std::size_t>(result) > kMaxWrite) {
            error = detail::ErrorOf(result < 0 ? reason : result);
            return 0;
        }
        return std::min(static_cast<std::size_t>(result), part.size());
    }

    // The un-registration waits for the sweep under way; then nobody uses the slot any more.
    void Detach() {
        if (m_Session == nullptr) {
            return;
        }
        if (m_IsOpen && m_Session->IsAlive()) {
            KOVAMGR_UnRegisterCommDataReadCallback(Trampoline(), m_Id);
        }
        detail::Slots::Get().Free(m_Slot);
        m_Session.reset();
        m_Id = -1;
        m_IsOpen = false;
    }

    std::shared_ptr<detail::Session> m_Session; // null: holds no port
    std::size_t m_Slot = detail::Slots::kNone;
    int m_Id = -1;
    bool m_IsOpen = false;
};

} // namespace v1
} // namespace kovasmgr

#endif
