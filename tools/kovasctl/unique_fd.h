// SPDX-License-Identifier: MIT
#ifndef KOVASCTL_UNIQUE_FD_H
#define KOVASCTL_UNIQUE_FD_H

#include <unistd.h>

#include <utility>

/// Owns a descriptor.
class UniqueFd {
  public:
    explicit UniqueFd(int descriptor = -1) : m_Descriptor(descriptor) {}
    ~UniqueFd() { Reset(); }
    UniqueFd(const UniqueFd&) = delete;
    UniqueFd& operator=(const UniqueFd&) = delete;
    UniqueFd(UniqueFd&& other) noexcept : m_Descriptor(std::exchange(other.m_Descriptor, -1)) {}
    UniqueFd& operator=(UniqueFd&& other) noexcept {
        std::swap(m_Descriptor, other.m_Descriptor);
        return *this;
    }

    int Get() const { return m_Descriptor; }
    bool IsOpen() const { return m_Descriptor >= 0; }
    void Reset() {
        if (IsOpen()) {
            close(std::exchange(m_Descriptor, -1));
        }
    }

  private:
    int m_Descriptor;
};

#endif
