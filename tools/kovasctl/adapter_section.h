// SPDX-License-Identifier: MIT
#ifndef KOVASCTL_ADAPTER_SECTION_H
#define KOVASCTL_ADAPTER_SECTION_H

#include "tools/kovasctl/adapter_place.h"
#include "tools/kovasctl/findings.h"

/// Examines an adapter's file: what it is, whether it loads, which functions it has.
/// Only while there are no other threads.
/// @return whether the library can use it
/// @throws Failure, Interrupted
bool ExamineAdapter(const AdapterPlace& adapter, Findings& findings);

#endif
