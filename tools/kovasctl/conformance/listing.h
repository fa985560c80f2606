// SPDX-License-Identifier: MIT
#ifndef KOVASCTL_CONFORMANCE_LISTING_H
#define KOVASCTL_CONFORMANCE_LISTING_H

#include <memory>
#include <set>
#include <string>
#include <utility>

#include "OSAdapt.h"

/// A zeroed list with room on both sides, for adapters that write outside it: that is a rule of its
/// own, and must not fail the others.
struct RoomyList {
    char before[8192];
    _OS_ADAPT_DEVICEPORTLIST list;
    char after[8192];
};

/// An answer that can be compared: pairs of a device's and a port's name.
using Listing = std::set<std::pair<std::string, std::string>>;

/// Takes what is valid of a list.
Listing ToListing(const _OS_ADAPT_DEVICEPORTLIST& list);

/// Counts as they are given, cut to what the list holds.
int DeviceCount(const _OS_ADAPT_DEVICEPORTLIST& list);
int PortCount(const _OS_ADAPT_DEVICEPORTINFO& device);

/// A text up to its end or to that of its array.
template <size_t size> std::string TextIn(const char (&array)[size]) {
    size_t length = 0;
    while (length < size && array[length] != '\0') {
        ++length;
    }
    return std::string(array, length);
}

/// The names of the ports of the first that are not in the second: "'a', 'b'"; empty for none.
std::string Missing(const Listing& first, const Listing& second);

bool HasPort(const Listing& listing, const std::string& portName);

#endif
