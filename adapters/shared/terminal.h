// SPDX-License-Identifier: MIT
//
// Bytes through a terminal descriptor that is in non-blocking mode.
#ifndef KOVASMGR_ADAPTERS_TERMINAL_H
#define KOVASMGR_ADAPTERS_TERMINAL_H

#include <chrono>
#include <cstddef>

/// How a transfer ended.
struct Transfer {
    size_t count = 0; // bytes moved
    int error = 0;    // 0, or the errno value of a terminal that does not work any more (EIO when
                      // it was hung up)
};

/// Lets all 256 byte values pass unchanged in both directions: no echo, no translation, no flow
/// control by characters, no signals. The line speed stays.
/// @return 0, or an errno value.
int MakeRaw(int terminal);

/// Reads what has arrived, at most size bytes; never blocks.
Transfer ReadAvailable(int terminal, void* buffer, size_t size);

/// Writes what the terminal takes without waiting.
Transfer WriteAvailable(int terminal, const void* data, size_t length);

/// Writes all bytes, or as many as the terminal takes within the time. Waiting is a cancellation
/// point.
Transfer WriteWithin(int terminal, const void* data, size_t length, std::chrono::milliseconds time);

/// Throws away what has arrived.
void DiscardArrived(int terminal);

#endif
