// SPDX-License-Identifier: MIT
#ifndef KOVASMGR_ADAPTERS_VIRTUAL_COPY_NUMBERS_H
#define KOVASMGR_ADAPTERS_VIRTUAL_COPY_NUMBERS_H

#include <cstddef>
#include <optional>
#include <string>

/// Which copy of a device or port it is that has a count, from 1.
struct CopyNumbers {
    std::optional<size_t> device; // "{n}" in names
    std::optional<size_t> port;   // "{p}" in names
};

/// A name with the numbers put in; those that there are none of stay as they are.
std::string NameOfCopy(std::string name, const CopyNumbers& numbers);

#endif
