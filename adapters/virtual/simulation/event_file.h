// SPDX-License-Identifier: MIT
#ifndef KOVASMGR_ADAPTERS_VIRTUAL_EVENT_FILE_H
#define KOVASMGR_ADAPTERS_VIRTUAL_EVENT_FILE_H

#include <string>

#include "adapters/virtual/simulation/event_log.h"

/// Writes what happened in a session to the file that KOVASMGR_VIRTUAL_EVENTS names, whole or not
/// at all. A session in which nothing happened leaves the file of an earlier one of this process. A
/// failure is logged.
void WriteEventFile(const EventLog& log);

#endif
