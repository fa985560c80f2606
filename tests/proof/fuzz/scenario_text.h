// SPDX-License-Identifier: MIT
//
// Scenarios back into text, and whether two are the same: what has been read must be read again.
#ifndef KOVASMGR_TESTS_PROOF_FUZZ_SCENARIO_TEXT_H
#define KOVASMGR_TESTS_PROOF_FUZZ_SCENARIO_TEXT_H

#include <optional>
#include <string>

#include "adapters/virtual/language/scenario.h"

/// A sentence that leaves nothing out.
std::string EventText(const Event& event);

/// A scenario file in which all copies stand by themselves and all sentences at its top; nothing when
/// a line of it would be longer than the reader allows, or when a far end plays a recording.
std::optional<std::string> ScenarioText(const Scenario& scenario);

// Where and in which words something was written makes no difference.
bool IsSame(const Action& one, const Action& other);
bool IsSame(const Event& one, const Event& other);
bool IsSame(const Scenario& one, const Scenario& other);

#endif
