// SPDX-License-Identifier: MIT
#ifndef KOVASCTL_COMMAND_LINE_H
#define KOVASCTL_COMMAND_LINE_H

/// Reads the command line by the table of commands, and does what it says: a command, or help.
/// @return the exit status
/// @throws WrongUse, Failure, Interrupted
int RunCommandLine(int argc, char** argv);

#endif
