// SPDX-License-Identifier: MIT
//
// Every wait of the tool is one of these: a signal ends it, and so does the end of whoever reads
// standard output.
#ifndef KOVASCTL_WAITING_H
#define KOVASCTL_WAITING_H

#include <chrono>
#include <initializer_list>
#include <optional>

using Clock = std::chrono::steady_clock;

/// A moment to give up at; without one, never.
using Deadline = std::optional<Clock::time_point>;

Deadline After(std::optional<double> seconds);
bool IsOver(const Deadline& deadline);

/// The earlier of two.
Deadline Sooner(const Deadline& left, const Deadline& right);

/// Waits until one of the descriptors can be read or has hung up, or the deadline is over.
/// @throws Interrupted
void WaitForInput(std::initializer_list<int> descriptors, const Deadline& deadline);

/// Whether a descriptor can be read or has hung up, right now.
bool IsReadable(int descriptor);

/// @throws Interrupted
void WaitUntilWritable(int descriptor);

#endif
