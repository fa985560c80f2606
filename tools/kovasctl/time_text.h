// SPDX-License-Identifier: MIT
#ifndef KOVASCTL_TIME_TEXT_H
#define KOVASCTL_TIME_TEXT_H

#include <chrono>
#include <string>

/// Local time, "2026-01-31 23:59:59.123".
std::string TimeForPeople(std::chrono::system_clock::time_point time);

/// The same as ISO 8601 with the difference to UTC, "2026-01-31T23:59:59.123+01:00".
std::string TimeForPrograms(std::chrono::system_clock::time_point time);

#endif
