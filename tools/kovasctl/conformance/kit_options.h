// SPDX-License-Identifier: MIT
#ifndef KOVASCTL_CONFORMANCE_KIT_OPTIONS_H
#define KOVASCTL_CONFORMANCE_KIT_OPTIONS_H

#include <string>
#include <vector>

/// What the person allows and has.
struct KitOptions {
    std::string file;                      // the adapter
    std::string home;                      // where the commands are run
    std::vector<std::string> ports;        // may be opened, and written a line end to
    std::vector<std::string> stalledPorts; // their far ends do not read: written to until full
    std::string unplug;                    // shell commands; both empty: there are none
    std::string plug;
    double timeout = 20;   // seconds that one rule may take
    double writeBound = 1; // seconds within which the adapter promises to end a write

    bool HasCommands() const { return !unplug.empty(); }
};

#endif
