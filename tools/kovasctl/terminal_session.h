// SPDX-License-Identifier: MIT
#ifndef KOVASCTL_TERMINAL_SESSION_H
#define KOVASCTL_TERMINAL_SESSION_H

#include <optional>
#include <string>

#include "tools/kovasctl/library.h"
#include "tools/kovasctl/notices.h"
#include "tools/kovasctl/open_port.h"
#include "tools/kovasctl/raw_terminal.h"
#include "tools/kovasctl/term_keys.h"
#include "tools/kovasctl/term_screen.h"
#include "tools/kovasctl/waiting.h"

struct TerminalOptions {
    std::string port;
    std::string line;
    std::string logFile;
    std::string escape = "t";
    std::string lineEnd = "cr"; // of the Enter key
    bool hasEcho = false;
    bool isHex = false;
    bool isOnce = false; // ends with the device instead of waiting for it
};

/// A person's conversation with a port, across its going and coming back.
class TerminalSession {
  public:
    /// @throws WrongUse, Failure
    TerminalSession(const GlobalOptions& global, const TerminalOptions& options);

    /// Returns when the person quits.
    /// @throws Failure, Interrupted
    void Run();

  private:
    void Greet();

    // Connecting
    std::vector<ChosenPort> Candidates() const;
    void Connect();
    void Open(const ChosenPort& port);
    void OnLost(const std::string& why);
    void TellOnce(const std::string& message);

    // One turn
    void Wait();
    void OnNotices();
    void FetchReceived();
    void FetchTyped();
    void SendPending();
    void OnCommand(TermKeys::Command command);
    void SendBreak();

    TerminalOptions m_Options;
    TermKeys m_Keys;
    TermScreen m_Screen;
    Library m_Library;
    Notices m_Notices;
    RawTerminal m_Raw;
    Snapshot m_Present;
    std::optional<ChosenPort> m_Last; // that was open
    std::optional<OpenPort> m_Port;
    std::string m_Pending; // typed, and not yet taken by the port
    std::string m_Told;    // last, while not connected
    bool m_IsEnded = false;
};

#endif
