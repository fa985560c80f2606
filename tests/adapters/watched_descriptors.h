// SPDX-License-Identifier: MIT
#ifndef KOVASMGR_TESTS_ADAPTERS_WATCHED_DESCRIPTORS_H
#define KOVASMGR_TESTS_ADAPTERS_WATCHED_DESCRIPTORS_H

#include <cstddef>

/// Epoll sets of this process.
std::size_t EpollSets();

/// Descriptors that are in them, in all.
std::size_t WatchedDescriptors();

#endif
