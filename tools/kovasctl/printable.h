// SPDX-License-Identifier: MIT
//
// Texts that come from devices, made fit for a person's terminal.
#ifndef KOVASCTL_PRINTABLE_H
#define KOVASCTL_PRINTABLE_H

#include <cstddef>
#include <string>

/// Control characters and what is no UTF-8 become '?': a device's name must not steer the terminal.
std::string Printable(const std::string& text);

/// How many columns a printable text takes on a terminal.
size_t ColumnsOf(const std::string& text);

/// The text with blanks behind it, to this many columns.
std::string Padded(const std::string& text, size_t columns);

/// Whether the locale's characters are UTF-8, so that lines can be drawn.
bool IsUtf8Terminal();

#endif
