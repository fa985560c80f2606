// SPDX-License-Identifier: MIT
#ifndef KOVASMGR_ADAPTERS_VIRTUAL_CONTROL_COMMANDS_H
#define KOVASMGR_ADAPTERS_VIRTUAL_CONTROL_COMMANDS_H

#include <cstdint>
#include <optional>
#include <string>

#include "adapters/virtual/simulation/director.h"

/// What a command gave. Its last line begins with "ok" or "error".
struct Reply {
    std::string text;
    std::optional<uint64_t> ticket; // the text is to be sent when the host has been told
};

/// Carries out one command line, whatever it holds.
/// Threads: as the director.
Reply RunCommand(Director& director, const std::string& line);

#endif
