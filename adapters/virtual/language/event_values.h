// SPDX-License-Identifier: MIT
//
// The times and numbers of sentences, from a word alone; nothing where the word is none.
#ifndef KOVASMGR_ADAPTERS_VIRTUAL_EVENT_VALUES_H
#define KOVASMGR_ADAPTERS_VIRTUAL_EVENT_VALUES_H

#include <optional>
#include <string>

#include "adapters/virtual/language/event.h"

/// The longest time that can be written: about eleven days.
constexpr ScenarioTime kMaxTime = std::chrono::seconds(1000000);

/// "2s", "50ms", "250us", "1m", "1h", "1.5s": up to kMaxTime, a whole number of microseconds.
std::optional<ScenarioTime> ReadTime(const std::string& word);

/// "3", up to nine digits.
std::optional<size_t> ReadCount(const std::string& word);

/// "1st", "2nd", "3rd", "4th" ...; never 0.
std::optional<size_t> ReadNth(const std::string& word);

/// A time as a sentence has it.
std::string TimeText(ScenarioTime time);

#endif
