// SPDX-License-Identifier: MIT
#ifndef KOVASCTL_CONFORMANCE_RULE_CHILD_H
#define KOVASCTL_CONFORMANCE_RULE_CHILD_H

#include "tools/kovasctl/conformance/kit_options.h"
#include "tools/kovasctl/conformance/rule.h"

/// What the process of a rule does: tries it, tells the verdict and ends.
/// @param tool    a socket to the tool
/// @param errors  becomes standard error, where sanitizers and run times tell of crashes
[[noreturn]] void BecomeRuleChild(const Rule& rule, const KitOptions& options, int tool,
                                  int errors);

#endif
