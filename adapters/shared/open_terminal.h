// SPDX-License-Identifier: MIT
#ifndef KOVASMGR_ADAPTERS_OPEN_TERMINAL_H
#define KOVASMGR_ADAPTERS_OPEN_TERMINAL_H

#include <atomic>
#include <chrono>
#include <utility>

#include "adapters/shared/unique_fd.h"

/// The host's end of an open port: a terminal descriptor in non-blocking mode, closed with this
/// object. An adapter whose ports end in another way derives from it; its destructor may take up to
/// a second.
///
/// Threads: any.
class OpenTerminal {
  public:
    using Time = std::chrono::milliseconds;

    explicit OpenTerminal(UniqueFd descriptor) : m_Descriptor(std::move(descriptor)) {}
    virtual ~OpenTerminal() = default;
    OpenTerminal(const OpenTerminal&) = delete;
    OpenTerminal& operator=(const OpenTerminal&) = delete;

    /// The same number as long as this object lives.
    int Descriptor() const { return m_Descriptor.Get(); }

    /// How long a write may wait for room.
    Time WriteTime() const { return Time(m_WriteTime); }
    void SetWriteTime(Time time) { m_WriteTime = time.count(); }

  protected:
    /// For a destructor that closes in its own way.
    UniqueFd TakeDescriptor() { return std::move(m_Descriptor); }

  private:
    UniqueFd m_Descriptor;
    std::atomic<Time::rep> m_WriteTime{1000};
};

#endif
