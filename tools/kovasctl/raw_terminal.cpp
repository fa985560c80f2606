// SPDX-License-Identifier: MIT
#include "tools/kovasctl/raw_terminal.h"

#include <unistd.h>

#include "tools/kovasctl/failure.h"
#include "tools/kovasctl/signals.h"

RawTerminal::RawTerminal() {
    if (tcgetattr(STDIN_FILENO, &m_Before) != 0) {
        throw WrongUse("term needs a terminal; scripts use send and receive");
    }
    SetTerminalToRestore(&m_Before);
    termios raw = m_Before;
    cfmakeraw(&raw);
    tcsetattr(STDIN_FILENO, TCSANOW, &raw);
}

RawTerminal::~RawTerminal() {
    tcsetattr(STDIN_FILENO, TCSANOW, &m_Before);
    SetTerminalToRestore(nullptr);
}
