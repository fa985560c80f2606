// SPDX-License-Identifier: MIT
//
// Why a port did not open, and what to do about it: one sentence each, for the log. Slow, but
// bounded.
#ifndef KOVASMGR_ADAPTERS_LINUX_OPEN_FAILURE_H
#define KOVASMGR_ADAPTERS_LINUX_OPEN_FAILURE_H

#include <sys/types.h>

#include <string>

/// Whether an errno value says that the device is not there (any more).
bool IsGone(int error);

std::string GoneText();
std::string NotATerminalText();

/// Names who has it open, where this user may see that.
std::string BusyText(const std::string& node, dev_t number);

/// For the errno value of a failed opening; knows permissions, busy, gone and descriptors used up.
std::string OpenFailureText(const std::string& node, dev_t number, int error);

#endif
