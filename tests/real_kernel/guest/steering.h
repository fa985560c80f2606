// SPDX-License-Identifier: MIT
#ifndef KOVASMGR_TESTS_REAL_KERNEL_GUEST_STEERING_H
#define KOVASMGR_TESTS_REAL_KERNEL_GUEST_STEERING_H

#include <string>

/// Asks the program that runs this machine to do something, and waits until it has been done.
/// @param request  "plug LINE [SERIAL]", "pull LINE", "send LINE SIZE" or "expect LINE SIZE"
/// @throws std::runtime_error with the reason when it could not be done
void Ask(const std::string& request);

/// Opens the line to that program, so that it does not count as a leak later.
void OpenSteering();

#endif
