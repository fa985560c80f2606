// SPDX-License-Identifier: MIT
#ifndef KOVASCTL_STATE_DIRECTORY_H
#define KOVASCTL_STATE_DIRECTORY_H

#include <string>

/// Makes a new directory for this process alone: below the user's state directory
/// ($XDG_STATE_HOME/kovasctl, else ~/.local/state/kovasctl), or where there is none to be had, below
/// $TMPDIR or /tmp. Of those that earlier runs have kept, the oldest are removed.
/// @throws Failure
std::string MakeStateDirectory();

#endif
