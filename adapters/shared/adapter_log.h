// SPDX-License-Identifier: MIT
//
// The adapter's lines in "KOVASMgr.log". Safe with any text: nothing in it is taken as a
// conversion, and control characters are replaced.
#ifndef KOVASMGR_ADAPTERS_ADAPTER_LOG_H
#define KOVASMGR_ADAPTERS_ADAPTER_LOG_H

#include <string>

/// Binds the log functions, which takes the dynamic linker's lock. To be called by the first of the
/// exported functions: later, a thread that unloads the adapter may hold that lock and wait for a
/// thread of the adapter which wants to write a line.
void PrepareLog();

/// Threads: any. May be cancelled.
void LogInfo(const std::string& text);
void LogError(const std::string& text);

/// Writes an error that a host can cause again and again, like opening a port that is gone, one
/// time for each text.
/// Threads: any. May be cancelled.
void LogErrorOnce(const std::string& text);

/// Lets every cause be written again, and frees all memory.
void ForgetLoggedErrors();

/// "No such device (errno 19)"
std::string ErrnoText(int error);

/// A text from outside made fit for a log line: cut to 200 bytes, control characters replaced.
std::string Printable(const std::string& text);

#endif
