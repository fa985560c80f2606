// SPDX-License-Identifier: MIT
//
// The line settings that people configure. Default, environment variable OSADAPT_LINE, the system's
// file, the user's file: each overrides the ones before.
#ifndef KOVASMGR_ADAPTERS_LINUX_LINE_CONFIG_H
#define KOVASMGR_ADAPTERS_LINUX_LINE_CONFIG_H

#include <string>

#include "adapters/linux/line_settings.h"
#include "adapters/linux/port_facts.h"

/// A file's whole path; a file that is not there is passed over, and an empty path too.
struct LineFiles {
    std::string system;
    std::string user;
};

/// "/etc/kovasmgr/linux.toml", and "kovasmgr/linux.toml" below XDG_CONFIG_HOME or HOME's .config.
/// In a process with raised privileges there is no user's file, as its variables are not believed.
LineFiles StandardLineFiles();

/// What is configured for a port; everything is read anew.
/// @throws std::runtime_error "file:line: reason" or "OSADAPT_LINE: reason". A file that cannot be
///         read whole is a mistake for every port; a mistake in the line of a [[port]] only for the
///         ports that it matches.
LineSettings ConfiguredLine(const PortFacts& facts, const std::string& deviceName);
LineSettings ConfiguredLine(const PortFacts& facts, const std::string& deviceName,
                            const LineFiles& files);

#endif
