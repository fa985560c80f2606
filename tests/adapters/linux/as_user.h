// SPDX-License-Identifier: MIT
#ifndef KOVASMGR_TESTS_ADAPTERS_LINUX_AS_USER_H
#define KOVASMGR_TESTS_ADAPTERS_LINUX_AS_USER_H

#include <functional>
#include <string>

/// Runs a function that gives a text in a process of its own, which has no privileges: where the
/// tests run as root, it is a user without a group that matters.
std::string AsUser(const std::function<std::string()>& body);

#endif
