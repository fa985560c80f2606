// SPDX-License-Identifier: MIT
//
// Sentences into events and actions. README.md has the grammar.
//
// What is wrong with a sentence is thrown as std::runtime_error with a reason that names the word
// and says what was expected: "'soon' after 'at': expected a time such as 2s or 50ms". Whether the
// names in it are those of devices, modes and ports is for others to check.
#ifndef KOVASMGR_ADAPTERS_VIRTUAL_EVENT_READER_H
#define KOVASMGR_ADAPTERS_VIRTUAL_EVENT_READER_H

#include <string>

#include "adapters/virtual/language/event.h"

/// Reads 'at 2s pull modem', 'on "ATI\r" from modem-0 reply "OK\r\n" after 20ms' and the like.
/// @param ownPort  the port that is meant where a sentence names none; empty: it must name one
/// @return the event, its line 0
Event ReadEvent(const std::string& text, const std::string& ownPort = "");

/// Reads an action alone, as it is given to a running scenario: 'pull modem', 'fail write to p1'.
/// Whether a word stands in quotes makes no difference here, and in bytes that stand without quotes
/// a backslash has the same meaning as in quotes.
Action ReadAction(const std::string& text);

#endif
