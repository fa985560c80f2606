// SPDX-License-Identifier: MIT
#ifndef KOVASMGR_ADAPTERS_VIRTUAL_EVENT_WORDS_H
#define KOVASMGR_ADAPTERS_VIRTUAL_EVENT_WORDS_H

#include <string>
#include <vector>

/// A word of a sentence.
struct EventWord {
    std::string text; // without the quotes, backslashes resolved
    bool isQuoted = false;
};

/// The words of a sentence, which blanks and tabs set apart. One in double quotes may hold any
/// bytes: \r \n \t \0 \\ \" and \xHH, two hexadecimal digits, are what they are in C, and all
/// others stand for themselves.
/// @throws std::runtime_error with the reason
std::vector<EventWord> SplitEventWords(const std::string& sentence);

/// Resolves the backslashes of a text as if it stood in quotes.
/// @throws std::runtime_error with the reason
std::string ResolveBackslashes(const std::string& text);

/// A text as it stands in a sentence, in quotes; all in it but printable ASCII is written as \xHH
/// or shorter.
std::string QuoteBytes(const std::string& bytes);

#endif
