// SPDX-License-Identifier: MIT
#ifndef KOVASCTL_ADAPTER_PROBE_H
#define KOVASCTL_ADAPTER_PROBE_H

#include <string>
#include <vector>

/// What an adapter library is worth, found out without calling it.
struct AdapterFacts {
    struct Function {
        std::string name;
        bool isFound = false;
    };

    std::string loadError; // why it does not load; empty: it does
    std::vector<Function> functions;
    bool hasSetLine = false; // OSADAPT_SetLine, which hosts may use and adapters may have

    bool IsUsable() const { return Problem().empty(); }

    /// Why the library would refuse it; empty: it would not.
    std::string Problem() const;
};

/// Loads an adapter as the library does, but in a process of its own, which a broken one may crash
/// or hang without harm; takes 10 seconds at most.
/// Only while there are no other threads.
/// @throws Failure when no process is to be had, Interrupted
AdapterFacts ProbeAdapter(const std::string& file);

#endif
