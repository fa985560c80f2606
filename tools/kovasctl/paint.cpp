// SPDX-License-Identifier: MIT
#include "tools/kovasctl/paint.h"

#include "tools/kovasctl/streams.h"

namespace {

const char* Sequence(Colour colour) {
    switch (colour) {
    case Colour::Bold:
        return "\x1b[1m";
    case Colour::Dim:
        return "\x1b[2m";
    case Colour::Red:
        return "\x1b[31m";
    case Colour::Green:
        return "\x1b[32m";
    case Colour::Yellow:
        return "\x1b[33m";
    case Colour::Cyan:
        return "\x1b[36m";
    }
    return "";
}

} // namespace

std::string Painted(Colour colour, const std::string& text) {
    static const bool hasColours = HasColours();
    return hasColours ? Sequence(colour) + text + "\x1b[0m" : text;
}
