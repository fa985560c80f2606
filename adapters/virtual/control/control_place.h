// SPDX-License-Identifier: MIT
//
// Where a host's control directory is, for the adapter that makes it and the program that finds it.
#ifndef KOVASMGR_ADAPTERS_VIRTUAL_CONTROL_PLACE_H
#define KOVASMGR_ADAPTERS_VIRTUAL_CONTROL_PLACE_H

#include <string>
#include <vector>

// In the control directory. The socket has its first name until it listens, so that nobody who sees
// it under the other one is refused.
constexpr const char* kDeafSocket = ".new";
constexpr const char* kControlSocket = "control";
constexpr const char* kPortLinks = "ports";

/// The directory that KOVASMGR_VIRTUAL_DIR names, empty when it is not set.
std::string ChosenControlDirectory();

/// The directories that may hold a control directory for each host process of this user, named by
/// its process identifier: "$XDG_RUNTIME_DIR/kovasmgr" when that variable names a directory of the
/// user's own, and "/tmp/kovasmgr-<uid>". The adapter uses the first.
std::vector<std::string> ControlBases();

/// Whether a name is a process identifier.
bool IsProcessId(const std::string& name);

/// Whether a process runs, of whichever user.
/// @param processId  such a name
bool IsRunning(const std::string& processId);

#endif
