// SPDX-License-Identifier: MIT
#ifndef KOVASMGR_TESTS_HARNESS_FIGURES_H
#define KOVASMGR_TESTS_HARNESS_FIGURES_H

#include <string>

/// Notes a figure that a test has measured: printed, and appended as a line
/// {"figure": "allocations.refused", "value": 123} to the file that the environment variable
/// KOVASMGR_FIGURES names, if it names one. Names are lower case, "<promise>.<what>", with the unit
/// at the end where there is one ("soak.longest_stop_ms").
///
/// Threads: all; each line is one write.
void NoteFigure(const std::string& name, double value);

#endif
