// SPDX-License-Identifier: MIT
#ifndef KOVASMGR_ADAPTERS_SPY_FAULT_H
#define KOVASMGR_ADAPTERS_SPY_FAULT_H

#include <chrono>
#include <cstdint>
#include <string>
#include <vector>

#include "OSAdaptSpy.h"

enum class FaultKind {
    Fail,           // the call is not passed on and fails
    FailWithHandle, // an opening is passed on, and fails with its handle set
    Delay,          // the call is passed on so much later
    Short,          // a read or write is passed on with so many bytes at most
    Result          // the call is not passed on and has this result
};

/// One entry of a plan: what happens to which calls.
struct Fault {
    OSADAPT_SPY_KIND call = OSADAPT_SPY_REGISTER;
    std::string port;   // empty: calls of all ports
    uint64_t first = 1; // of the calls that it is about, counted from 1
    uint64_t last = 1;  // UINT64_MAX: all that follow
    FaultKind kind = FaultKind::Fail;
    std::chrono::nanoseconds delay{0}; // Delay
    long number = 0;                   // Short: bytes; Result: the result
    std::string text;                  // as in the plan: "delay:20ms"
};

/// Reads a plan: "write:3=fail,read@modem:*=delay:20ms". README.md describes it.
/// @throws std::runtime_error with the place and the reason of the first mistake
std::vector<Fault> ReadFaults(const std::string& plan);

#endif
