// SPDX-License-Identifier: MIT
#ifndef KOVASMGR_ADAPTERS_UNIQUE_FD_H
#define KOVASMGR_ADAPTERS_UNIQUE_FD_H

#include <unistd.h>

#include <utility>

#include "adapters/shared/cancel_shield.h"

/// Owns a descriptor; -1 is none.
class UniqueFd {
  public:
    UniqueFd() = default;
    explicit UniqueFd(int descriptor) : m_Descriptor(descriptor) {}
    ~UniqueFd() { Reset(); }
    UniqueFd(UniqueFd&& other) noexcept : m_Descriptor(std::exchange(other.m_Descriptor, -1)) {}
    UniqueFd& operator=(UniqueFd&& other) noexcept {
        if (this != &other) {
            Reset();
            m_Descriptor = std::exchange(other.m_Descriptor, -1);
        }
        return *this;
    }

    int Get() const { return m_Descriptor; }
    bool IsOpen() const { return m_Descriptor >= 0; }

    /// Gives the descriptor away without closing it.
    int Release() { return std::exchange(m_Descriptor, -1); }

    void Reset() {
        if (IsOpen()) {
            // close() is a cancellation point, and this may be a destructor.
            const CancelShield shield;
            close(std::exchange(m_Descriptor, -1));
        }
    }

  private:
    int m_Descriptor = -1;
};

#endif
