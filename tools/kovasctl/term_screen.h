// SPDX-License-Identifier: MIT
#ifndef KOVASCTL_TERM_SCREEN_H
#define KOVASCTL_TERM_SCREEN_H

#include <string>
#include <string_view>

#include "tools/kovasctl/unique_fd.h"

/// What a person sees of a port, on a terminal in raw mode: received bytes, typed ones when asked
/// for, and messages on lines of their own. Received bytes go to the log file as they are.
class TermScreen {
  public:
    /// @param logFile  empty: none; appended to
    /// @throws WrongUse when it cannot be opened
    TermScreen(const std::string& logFile, bool hasEcho, bool isHex);
    ~TermScreen(); // leaves the cursor at the start of a line
    TermScreen(const TermScreen&) = delete;
    TermScreen& operator=(const TermScreen&) = delete;

    /// @throws Interrupted, Failure
    void ShowReceived(const std::string& bytes);
    void ShowTyped(const std::string& bytes);
    void Tell(const std::string& message);

    bool ToggleEcho() { return m_HasEcho = !m_HasEcho; }
    bool ToggleHex() { return m_IsHex = !m_IsHex; }

  private:
    void Log(std::string_view bytes);
    void Show(const std::string& text);
    std::string AsHex(const std::string& bytes);

    UniqueFd m_Log;
    bool m_HasEcho;
    bool m_IsHex;
    size_t m_HexColumn = 0;
    bool m_IsAtLineStart = true;
};

#endif
