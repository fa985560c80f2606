// SPDX-License-Identifier: MIT
#ifndef KOVASMGR_TESTS_REAL_KERNEL_GUEST_NOTICES_H
#define KOVASMGR_TESTS_REAL_KERNEL_GUEST_NOTICES_H

#include <chrono>
#include <functional>
#include <string>
#include <vector>

#include "KOVASMgr.h"

/// The device notices of this process, since the last Clear.
namespace notices {

using Instant = std::chrono::steady_clock::time_point;

struct Notice {
    bool isInsertion = false;
    Instant when;
};

/// What to register.
void OnDevices(_KOVAMGR_DEV_STATE_TYPE_ state);

std::vector<Notice> All();

/// One sign for each: "-+" is a pull-out and then an insertion.
std::string Signs();

bool WaitForSigns(const std::string& signs);

/// The same, and forgets them. A device is listed a moment before its notice is written down:
/// without this, a notice that is still under way counts among the next ones.
bool TakeSigns(const std::string& signs);

/// Runs inside each notice, before it is written down; none: nothing runs.
void OnEach(std::function<void()> action);

void Clear();

} // namespace notices

#endif
