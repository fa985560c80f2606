// SPDX-License-Identifier: MIT
//
// What happens to a device while the adapter is busy with it.
#ifndef KOVASMGR_TESTS_ADAPTERS_LINUX_MOCK_CALLS_H
#define KOVASMGR_TESTS_ADAPTERS_LINUX_MOCK_CALLS_H

#include <functional>
#include <string>

/// Is done once, on the thread that opens this node, before or after it is opened.
void OnNextOpen(const std::string& node, std::function<void()> before,
                std::function<void()> after = nullptr);

/// Is done once, on the thread that looks for the devices present, before or after it has looked.
void OnNextScan(std::function<void()> before, std::function<void()> after = nullptr);

#endif
