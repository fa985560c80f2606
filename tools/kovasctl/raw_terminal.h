// SPDX-License-Identifier: MIT
#ifndef KOVASCTL_RAW_TERMINAL_H
#define KOVASCTL_RAW_TERMINAL_H

#include <termios.h>

/// The terminal of standard input in raw mode, for as long as this lives: every key is delivered as
/// it is, nothing is echoed.
class RawTerminal {
  public:
    /// @throws WrongUse when standard input is no terminal
    RawTerminal();
    ~RawTerminal();
    RawTerminal(const RawTerminal&) = delete;
    RawTerminal& operator=(const RawTerminal&) = delete;

  private:
    termios m_Before{};
};

#endif
