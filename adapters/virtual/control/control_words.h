// SPDX-License-Identifier: MIT
//
// A command line and its words, for the adapter that reads it and the program that writes it.
#ifndef KOVASMGR_ADAPTERS_VIRTUAL_CONTROL_WORDS_H
#define KOVASMGR_ADAPTERS_VIRTUAL_CONTROL_WORDS_H

#include <optional>
#include <string>
#include <vector>

/// Words stand apart by blanks; one that holds blanks stands in double quotes, in which a backslash
/// takes the meaning from the quote or backslash that follows it.
/// @return nothing when a quote is not closed
std::optional<std::vector<std::string>> SplitWords(const std::string& line);

/// A word in double quotes.
std::string QuoteWord(const std::string& word);

#endif
