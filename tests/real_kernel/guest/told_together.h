// SPDX-License-Identifier: MIT
#ifndef KOVASMGR_TESTS_REAL_KERNEL_GUEST_TOLD_TOGETHER_H
#define KOVASMGR_TESTS_REAL_KERNEL_GUEST_TOLD_TOGETHER_H

#include <string>

#include "tests/real_kernel/guest/tty_events.h"

/// Whether there was one notice at most for each group of events of this kind: what comes together
/// is told together, and a pause of 10 ms ends a group. A slow machine makes such pauses. Tells
/// figures.
/// @param action  "add" or "remove"
bool WasToldTogether(const TtyEvents& events, const std::string& source, const std::string& action,
                     TtyEvents::Instant start);

/// The notices "add" or "remove" since they were last cleared.
int NoticesOf(const std::string& action);

#endif
