// SPDX-License-Identifier: MIT
#ifndef KOVASCTL_CONFORMANCE_RULE_PROCESS_H
#define KOVASCTL_CONFORMANCE_RULE_PROCESS_H

#include "tools/kovasctl/conformance/kit_options.h"
#include "tools/kovasctl/conformance/rule.h"
#include "tools/kovasctl/conformance/verdict.h"

/// Tries a rule in a process of its own, within the time limit. Whatever the adapter does there, also
/// a crash, a hang or an exit, is the outcome. Only while there are no other threads.
/// @throws Failure when no process is to be had, Interrupted
Outcome TryRule(const Rule& rule, const KitOptions& options);

#endif
