// SPDX-License-Identifier: MIT
#ifndef KOVASMGR_ADAPTERS_TEXT_FILE_H
#define KOVASMGR_ADAPTERS_TEXT_FILE_H

#include <string>

struct TextFile {
    std::string text;
    std::string error;      // why it was not read; empty when it was
    bool isMissing = false; // there is no such file
};

/// Reads a whole regular file of at most 1 MiB. Whatever else the name turns out to be, a FIFO or a
/// device, the call neither waits for it nor reads from it.
TextFile ReadTextFile(const std::string& path);

#endif
