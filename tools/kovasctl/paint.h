// SPDX-License-Identifier: MIT
#ifndef KOVASCTL_PAINT_H
#define KOVASCTL_PAINT_H

#include <string>

enum class Colour { Bold, Dim, Red, Green, Yellow, Cyan };

/// The text in a colour where standard output shows colours, else as it is.
std::string Painted(Colour colour, const std::string& text);

#endif
