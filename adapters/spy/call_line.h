// SPDX-License-Identifier: MIT
#ifndef KOVASMGR_ADAPTERS_SPY_CALL_LINE_H
#define KOVASMGR_ADAPTERS_SPY_CALL_LINE_H

#include <string>

#include "adapters/spy/call.h"

/// The members of a call's line in a recording, from "thread" on, without braces.
/// @param thread  the number of the one that has called
std::string CallMembers(const Call& call, int64_t thread);

#endif
