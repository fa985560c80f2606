// SPDX-License-Identifier: MIT
#ifndef KOVASCTL_LINE_SETTINGS_H
#define KOVASCTL_LINE_SETTINGS_H

#include <string>

#include "tools/kovasctl/library.h"

/// Sets the line of a port ("115200,8n1") through the adapter that the library has loaded.
/// @throws Failure: the adapter has no lines to set, or refuses; with its reason
void SetLine(Library& library, const std::string& portName, const std::string& settings);

#endif
