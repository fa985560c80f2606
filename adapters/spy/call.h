// SPDX-License-Identifier: MIT
#ifndef KOVASMGR_ADAPTERS_SPY_CALL_H
#define KOVASMGR_ADAPTERS_SPY_CALL_H

#include <cstdint>
#include <string>

#include "OSAdapt.h"
#include "OSAdaptSpy.h"
#include "adapters/spy/port_book.h"

/// The word for a kind of calls in plans and recordings: "write"; "notice" for notices.
const char* NameOf(OSADAPT_SPY_KIND kind);

/// What is known of one call when it has ended, or of one notice. What is not of its kind is as it
/// is here.
struct Call {
    explicit Call(OSADAPT_SPY_KIND kindOfCall, const KnownPort* portOfCall = nullptr)
        : kind(kindOfCall), port(portOfCall) {}

    OSADAPT_SPY_KIND kind;
    const KnownPort* port;           // null: none, or one that was never opened
    int handle = OS_ADAPT_NO_HANDLE; // Open: the one that it gave
    const void* data = nullptr;      // Write, Read; borrowed
    long length = 0;                 // Write: bytes given; Read: room for so many
    long count = 0;                  // of a successful Write or Read, as the adapter has it
    int which = 0;                   // Enumerate
    const _OS_ADAPT_DEVICEPORTLIST* list = nullptr; // Enumerate; borrowed
    int status = 0;                                 // Notice
    std::string fault;                              // what the plan did to it
    int result = OS_ADAPT_FAILED;
    bool isFinished = false; // false: a cancellation or an exception has ended it
    int64_t startNs = 0;     // CLOCK_MONOTONIC
    int64_t endNs = 0;

    bool HasSucceeded() const { return isFinished && result == OS_ADAPT_OK; }

    /// How many of the data's bytes were really taken or given, whatever the adapter says.
    size_t BytesMoved() const;
};

/// CLOCK_MONOTONIC in nanoseconds.
int64_t MonotonicNs();

#endif
