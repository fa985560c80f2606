// SPDX-License-Identifier: MIT
//
// One line of a recording that an adapter of this project made of a host's calls.
#ifndef KOVASMGR_ADAPTERS_VIRTUAL_RECORDED_CALL_H
#define KOVASMGR_ADAPTERS_VIRTUAL_RECORDED_CALL_H

#include <string>
#include <string_view>
#include <vector>

#include "adapters/virtual/language/event.h"

struct RecordedPort {
    std::string name;
    int32_t id = 0;
};

struct RecordedDevice {
    std::string name;
    std::string text;
    std::vector<RecordedPort> ports;
};

struct RecordedCall {
    std::string call; // "open", "write" ...; empty: the line is of another kind
    bool succeeded = false;
    ScenarioTime start{0}; // by the recording's clock
    ScenarioTime end{0};
    std::string port;                    // open, write, read; empty of one that failed
    std::string data;                    // write, read: the bytes that were taken or given
    std::vector<RecordedDevice> devices; // enumerate
};

/// Whether a line looks like the first one of a recording.
bool IsRecordingHeader(std::string_view line);

/// Reads the first line, which says of which version the recording is.
/// @throws std::runtime_error with the reason, also for a version that is not known
void CheckRecordingHeader(const std::string& line);

/// Reads any other line. What is in it besides is left aside; what a call that failed was about is,
/// too.
/// @throws std::runtime_error with the reason
RecordedCall ReadRecordedCall(const std::string& line);

#endif
