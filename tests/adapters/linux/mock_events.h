// SPDX-License-Identifier: MIT
//
// Events as the kernel and udevd send them, delivered to the monitors that this process has opened.
#ifndef KOVASMGR_TESTS_ADAPTERS_LINUX_MOCK_EVENTS_H
#define KOVASMGR_TESTS_ADAPTERS_LINUX_MOCK_EVENTS_H

#include <string>
#include <utility>
#include <vector>

enum class EventSource { Kernel, Udev };

/// In the order in which they are sent. ACTION, DEVPATH and SUBSYSTEM must be among them.
using EventProperties = std::vector<std::pair<std::string, std::string>>;

/// Sends an event to all monitors of this source.
/// @param root  of the mocked system
void SendEvent(const std::string& root, EventSource source, const EventProperties& properties);

/// The next time that a monitor of this source has something to receive, receiving fails with this
/// error instead, once.
void FailNextReceive(EventSource source, int error);

/// The descriptors of the monitors that are open.
std::vector<int> OpenMonitors();

#endif
