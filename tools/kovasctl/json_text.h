// SPDX-License-Identifier: MIT
//
// What the tool tells programs. tools/kovasctl/README.md describes each form.
#ifndef KOVASCTL_JSON_TEXT_H
#define KOVASCTL_JSON_TEXT_H

#include <chrono>
#include <string>

#include "tools/kovasctl/difference.h"
#include "tools/kovasctl/findings.h"
#include "tools/kovasctl/snapshot.h"

/// Each is one object and a line end. What is no UTF-8 in a text becomes U+FFFD.
std::string DevicesAsJson(const Snapshot& snapshot);
std::string ChangeAsJson(const Change& change, std::chrono::system_clock::time_point time);
std::string FindingsAsJson(const Findings& findings);

#endif
