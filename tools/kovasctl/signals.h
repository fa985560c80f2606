// SPDX-License-Identifier: MIT
//
// SIGINT, SIGTERM, SIGHUP, SIGQUIT, SIGALRM, SIGUSR1 and SIGUSR2 end the program in order: the first
// one wakes whoever waits, and everything is unwound. A second one, for a device or adapter that
// hangs, restores the terminal and ends at once; so does the signal of a crash. SIGPIPE is ignored, so
// that writing tells of it.
#ifndef KOVASCTL_SIGNALS_H
#define KOVASCTL_SIGNALS_H

#include <termios.h>

/// Once, before there are threads.
void CatchSignals();

/// Readable from the first signal on.
int SignalDescriptor();

/// @throws Interrupted when a signal has come
void ThrowIfInterrupted();

/// What a second signal or a crash sets descriptor 0 back to; null: nothing. Borrowed until the next call.
void SetTerminalToRestore(const termios* settings);

#endif
