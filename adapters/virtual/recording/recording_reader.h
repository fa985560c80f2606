// SPDX-License-Identifier: MIT
#ifndef KOVASMGR_ADAPTERS_VIRTUAL_RECORDING_READER_H
#define KOVASMGR_ADAPTERS_VIRTUAL_RECORDING_READER_H

#include <string>
#include <vector>

#include "adapters/virtual/language/scenario.h"

struct Recording {
    Scenario scenario;              // its ports play what was recorded
    std::vector<std::string> notes; // "file:line: ...", what was left out
};

/// Whether a text is a recording and no scenario, by its first line.
bool IsRecording(const std::string& text);

/// Makes a scenario of the calls that were recorded of a host: all devices and ports that it was
/// ever told of, there and gone when they were, each of them sending what it sent then. Time 0 is
/// that of the first call. A last line without an end is what a host leaves that crashed.
/// @throws std::runtime_error "file:line: reason"
Recording ReadRecording(const std::string& text, const std::string& fileName);

#endif
