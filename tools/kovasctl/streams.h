// SPDX-License-Identifier: MIT
//
// Standard output carries the tool's data and nothing else. The library and adapters print trace
// lines to descriptor 1 as well, so that one is pointed at /dev/null, and data goes to a copy of the
// real one.
#ifndef KOVASCTL_STREAMS_H
#define KOVASCTL_STREAMS_H

#include <string>
#include <string_view>

/// Once, before anything else: descriptors 0 to 2 are open afterwards.
void PrepareStreams();

/// The real standard output; -1 when the program was started without one.
int DataDescriptor();
bool IsDataOnTerminal();
bool IsMessageOnTerminal();

/// Whether lines for people may have colours: on a terminal that can, unless NO_COLOR is set.
bool HasColours();

/// Writes all of it to the real standard output.
/// @throws Interrupted on a signal, also while the reader does not read, and when the reader has
///         gone; Failure on other errors
void WriteData(std::string_view data);

/// One line to standard error: "kovasctl: " and the text.
void Message(const std::string& text);

/// A piece of text to standard error as it is.
void WriteMessage(std::string_view text);

#endif
