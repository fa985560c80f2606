// SPDX-License-Identifier: MIT
#ifndef KOVASMGR_TESTS_REAL_KERNEL_GUEST_LINE_STATE_H
#define KOVASMGR_TESTS_REAL_KERNEL_GUEST_LINE_STATE_H

#include <string>

/// How the kernel says that a terminal is set.
class LineState {
  public:
    /// Asks through the descriptor that the adapter has: to open the terminal once more would raise
    /// its modem lines.
    static LineState OfThisProcess(const std::string& node);
    /// Opens the terminal beside whoever else has it open.
    static LineState Beside(const std::string& node);
    ~LineState();
    LineState(const LineState&) = delete;
    LineState& operator=(const LineState&) = delete;

    /// In both directions; 0 when they differ.
    unsigned BaudRate() const;
    /// "DTR RTS", "DTR", "RTS" or "".
    std::string ModemLines() const;
    /// Sets 9600 7N1, as another program may have left it.
    void SetOldFashioned() const;

    /// What stty says, with a blank around each word.
    std::string Stty() const;

  private:
    /// @throws std::runtime_error when it is none
    explicit LineState(int terminal);

    int m_Terminal;
};

#endif
