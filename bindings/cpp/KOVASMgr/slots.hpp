// SPDX-License-Identifier: MIT
#ifndef KOVASMGR_SLOTS_HPP
#define KOVASMGR_SLOTS_HPP

#include <KOVASMgr.h>

#include <array>
#include <cstddef>
#include <functional>
#include <memory>
#include <mutex>
#include <utility>

#include "byte_view.hpp"
#include "callback.hpp"

namespace kovasmgr {
inline namespace v1 {

/// How many Port objects can hold a port at a time in a process.
constexpr std::size_t kMaxOpenPorts = 64;

/// Receives what a port delivered: 1 to 4,096 bytes, without framing, valid during the call.
/// Runs as [receiver], see KOVASMgr.hpp. May be empty: what arrives is discarded then.
using Receiver = std::function<void(ByteView)>;

namespace detail {

// The callbacks of the C interface say neither which port they are called for nor on whose behalf.
// So each open Port has a plain function of its own, one of a fixed pool, that knows its number.
class Slots {
  public:
    static constexpr std::size_t kNone = kMaxOpenPorts;

    // Never destroyed: threads may run while the process exits.
    static Slots& Get() {
        static Slots& slots = *new Slots;
        return slots;
    }

    // kNone when all are taken. owner: whose port numbers these are.
    std::size_t Take(const void* owner, int port, Receiver receiver) {
        auto shared = std::make_shared<Receiver>(std::move(receiver));
        const std::lock_guard<std::mutex> lock(m_Mutex);
        for (std::size_t i = 0; i < kMaxOpenPorts; ++i) {
            if (m_Slots[i].receiver == nullptr) {
                m_Slots[i] = {owner, port, false, std::move(shared)};
                return i;
            }
        }
        return kNone;
    }

    void Free(std::size_t index) {
        Slot freed; // ends after the lock: the receiver's destructor is foreign code
        const std::lock_guard<std::mutex> lock(m_Mutex);
        std::swap(freed, m_Slots[index]);
    }

    bool HasReceiver(std::size_t index) { return static_cast<bool>(*ReceiverOf(index)); }

    void SetOpen(std::size_t index, bool isOpen) {
        const std::lock_guard<std::mutex> lock(m_Mutex);
        m_Slots[index].isOpen = isOpen;
    }

    // Whether nobody else has the same port open.
    bool IsTheLast(std::size_t index) {
        const std::lock_guard<std::mutex> lock(m_Mutex);
        const Slot& mine = m_Slots[index];
        for (const Slot& slot : m_Slots) {
            if (&slot != &mine && slot.isOpen && slot.owner == mine.owner &&
                slot.port == mine.port) {
                return false;
            }
        }
        return true;
    }

    void Deliver(std::size_t index, ByteView bytes) {
        const std::shared_ptr<Receiver> receiver = ReceiverOf(index); // may free its own slot
        if (receiver != nullptr && *receiver) {
            const ReceiverScope scope;
            CallOrTerminate([&] { (*receiver)(bytes); });
        }
    }

    static KOVAMGR_READ_CALLBACK Trampoline(std::size_t index) {
        return Pick(index, std::make_index_sequence<kMaxOpenPorts>());
    }

  private:
    struct Slot {
        const void* owner = nullptr;
        int port = -1;
        bool isOpen = false;
        std::shared_ptr<Receiver> receiver; // null: free
    };

    template <std::size_t index> static void OnData(void* data, int length) {
        Get().Deliver(index, {data, static_cast<std::size_t>(length)});
    }

    template <std::size_t... all>
    static KOVAMGR_READ_CALLBACK Pick(std::size_t index, std::index_sequence<all...>) {
        static constexpr KOVAMGR_READ_CALLBACK kTrampolines[] = {&OnData<all>...};
        return kTrampolines[index];
    }

    std::shared_ptr<Receiver> ReceiverOf(std::size_t index) {
        const std::lock_guard<std::mutex> lock(m_Mutex);
        return m_Slots[index].receiver;
    }

    std::mutex m_Mutex; // nothing is called while it is held
    std::array<Slot, kMaxOpenPorts> m_Slots;
};

} // namespace detail
} // namespace v1
} // namespace kovasmgr

#endif
