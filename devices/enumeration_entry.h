// SPDX-License-Identifier: MIT
//
// Reading what an adapter has enumerated, without trusting it: counts are bounded by the arrays
// they count, and a text ends one byte before the end of its array at the latest, everywhere in the
// same way, so that an unterminated name still equals itself at the next scan.
#ifndef KOVASMGR_DEVICES_ENUMERATION_ENTRY_H
#define KOVASMGR_DEVICES_ENUMERATION_ENTRY_H

#include <algorithm>
#include <cstring>
#include <string>

#include "OSAdapt.h"

template <size_t size> std::string BoundedText(const char (&text)[size]) {
    return std::string(text, strnlen(text, size - 1));
}

template <size_t size> bool BoundedEquals(const char (&text)[size], const char* other) {
    const size_t length = strnlen(text, size - 1);
    return std::strlen(other) == length && std::memcmp(text, other, length) == 0;
}

inline int BoundedDeviceCount(const _OS_ADAPT_DEVICEPORTLIST& list) {
    return std::clamp(list.nDeviceCount, 0, OS_ADAPT_MAX_DEVICES);
}

inline int BoundedPortCount(const _OS_ADAPT_DEVICEPORTINFO& device) {
    return std::clamp(device.nPortCount, 0, OS_ADAPT_MAX_PORTS);
}

#endif
