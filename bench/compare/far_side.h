// SPDX-License-Identifier: MIT
#ifndef KOVASMGR_BENCH_COMPARE_FAR_SIDE_H
#define KOVASMGR_BENCH_COMPARE_FAR_SIDE_H

#include <functional>

#include "bench/compare/subject.h"

/// Runs a subject on this thread, and the far ends of its ports on another, until that has done.
/// Throws what the other threw.
void RunAgainst(Subject& subject, const std::function<void()>& farEnds);

#endif
