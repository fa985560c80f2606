// SPDX-License-Identifier: MIT
#ifndef KOVASMGR_BENCH_TERMINAL_HOST_H
#define KOVASMGR_BENCH_TERMINAL_HOST_H

#include <ctime>

#include "KOVASMgr.h"

/// A thread and what it has used.
struct MeasuredThread {
    /// Its own, when called from it.
    static MeasuredThread This();

    double Seconds() const; // of a processor

    clockid_t clock = 0;
};

/// The library at work on the adapter of pseudo-terminals, all ports open; their identifiers are 1
/// onwards.
class TerminalHost {
  public:
    /// @param ports  up to 16, or a multiple of 16 up to 1,024
    explicit TerminalHost(int ports);
    ~TerminalHost();
    TerminalHost(const TerminalHost&) = delete;
    TerminalHost& operator=(const TerminalHost&) = delete;

    int Ports() const { return m_Ports; }

    /// The descriptor of a port's far end, in non-blocking mode.
    int FarEnd(int port) const;

    /// How often a port was read, of all ports together, also where there was nothing to read.
    long Reads() const;

    void CloseAllButFirst() const;
    void OpenAllButFirst() const;

    /// Makes this the read callback of each port.
    void CallBack(KOVAMGR_READ_CALLBACK callback) const;

    /// The library's read thread.
    const MeasuredThread& ReadThread() const { return m_ReadThread; }

  private:
    void* m_Adapter;
    int m_Ports;
    MeasuredThread m_ReadThread;
};

/// The value of an argument that is a number, else of the default.
int NumberArgument(int count, char** arguments, int index, int otherwise);

#endif
