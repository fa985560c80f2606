// SPDX-License-Identifier: MIT
#ifndef KOVASCTL_OPEN_PORT_H
#define KOVASCTL_OPEN_PORT_H

#include <string>
#include <string_view>

#include "tools/kovasctl/inbox.h"
#include "tools/kovasctl/library.h"
#include "tools/kovasctl/port_choice.h"

/// A port that is open for as long as this lives. One at a time: callbacks know no context.
class OpenPort {
  public:
    /// What one write may send: a count and a result code share one value (see KOVAMGR_Write).
    static constexpr size_t kMostPerWrite = 16384;

    /// @param lineSettings  empty: as they are
    /// @throws Failure with the adapter's reason
    OpenPort(Library& library, const ChosenPort& port, const std::string& lineSettings = "");
    ~OpenPort();
    OpenPort(const OpenPort&) = delete;
    OpenPort& operator=(const OpenPort&) = delete;

    const ChosenPort& Chosen() const { return m_Port; }
    Inbox& Received() { return m_Inbox; }

    /// Sends the first bytes, for about a second at most.
    /// @return how many were taken; 0 when there is no room now
    /// @throws Failure
    size_t Write(std::string_view data);

  private:
    static void OnData(void* data, int length);

    static OpenPort* s_Active;
    Library& m_Library;
    ChosenPort m_Port;
    Inbox m_Inbox;
};

#endif
