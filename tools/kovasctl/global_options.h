// SPDX-License-Identifier: MIT
#ifndef KOVASCTL_GLOBAL_OPTIONS_H
#define KOVASCTL_GLOBAL_OPTIONS_H

#include <string>
#include <vector>

/// What may stand before or behind any command.
struct GlobalOptions {
    std::string adapter;      // a name or a directory; empty: the installed one
    std::string logDirectory; // empty: a private one
    bool json = false;
    std::vector<std::string> behind; // what stands behind "--", as it was typed
};

#endif
