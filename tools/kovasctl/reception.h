// SPDX-License-Identifier: MIT
#ifndef KOVASCTL_RECEPTION_H
#define KOVASCTL_RECEPTION_H

#include <cstdint>
#include <optional>
#include <string>

/// Finds the end of what is to be received: a number of bytes, a text, whichever is first.
class Reception {
  public:
    Reception(std::optional<uint64_t> count, std::string until)
        : m_Count(count), m_Until(std::move(until)) {}

    /// Takes the next bytes, and cuts off what lies behind the end.
    void Accept(std::string& bytes);

    bool HasEnd() const { return m_Count || !m_Until.empty(); }
    bool IsComplete() const { return m_IsComplete; }
    uint64_t Received() const { return m_Received; }

  private:
    void CutBehindText(std::string& bytes);

    std::optional<uint64_t> m_Count;
    std::string m_Until;
    std::string m_Tail; // of what was accepted, where the text may have begun
    uint64_t m_Received = 0;
    bool m_IsComplete = false;
};

#endif
