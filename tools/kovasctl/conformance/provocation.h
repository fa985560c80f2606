// SPDX-License-Identifier: MIT
//
// Bringing notices about, by the person's commands.
#ifndef KOVASCTL_CONFORMANCE_PROVOCATION_H
#define KOVASCTL_CONFORMANCE_PROVOCATION_H

#include <memory>

#include "OSAdapt.h"

class Gate;
class Trial;

/// Keeps every notice of one kind from ending, until released.
class HeldNotices {
  public:
    HeldNotices(const Trial& trial, _OS_ADAPT_DEVICESTATUS_TYPE status);
    ~HeldNotices() { Release(); }
    HeldNotices(const HeldNotices&) = delete;
    HeldNotices& operator=(const HeldNotices&) = delete;

    void Release();

  private:
    std::shared_ptr<Gate> m_Gate; // a notice may outlive this
};

// Each starts the command and waits for the notice, which must not have been there before.
// All throw NotTried when it does not come: that is R17a.
void UnplugUntilStart(Trial& trial);
void UnplugUntilEnd(Trial& trial);
void PlugUntilEnd(Trial& trial);

/// Waits for a command to end.
/// @throws NotTried when it failed
void ExpectCommandEnds(Trial& trial, const char* name);

#endif
