// SPDX-License-Identifier: MIT
#ifndef KOVASMGR_ADAPTERS_TEXT_FILE_H
#define KOVASMGR_ADAPTERS_TEXT_FILE_H

#include <cstddef>
#include <string>

struct TextFile {
    std::string text;
    std::string error;      // why it was not read; empty when it was
    bool isMissing = false; // there is no such file
};

constexpr size_t kMebibyte = size_t{1024} * 1024;

/// Reads a whole regular file of at most so many bytes. Whatever else the name turns out to be, a
/// FIFO or a device, the call neither waits for it nor reads from it.
TextFile ReadTextFile(const std::string& path, size_t maxBytes = kMebibyte);

/// The error of a file that is larger than that: "larger than 1 MiB".
std::string TooLargeText(size_t maxBytes);

#endif
