// SPDX-License-Identifier: MIT
#ifndef KOVASCTL_CONFORMANCE_STALL_H
#define KOVASCTL_CONFORMANCE_STALL_H

#include <string>

class Trial;

constexpr long kStallPiece = 65536; // bytes of one write

/// A port that has been written to until it took no more.
struct Stall {
    int handle;
    double longest; // seconds that one of the writes took
    int result;     // of the write that found no room
};

/// Opens a port and fills it.
/// @throws NotTried when it does not open, or takes whatever it is given
Stall StallPort(Trial& trial, const std::string& port);

#endif
