// SPDX-License-Identifier: MIT
#ifndef KOVASMGR_ADAPTERS_SPY_RECORDING_H
#define KOVASMGR_ADAPTERS_SPY_RECORDING_H

#include <cstdint>
#include <mutex>
#include <string>

#include "adapters/spy/call.h"
#include "adapters/spy/output_file.h"
#include "adapters/spy/thread_numbers.h"

/// A file with one JSON line for each call, in the order in which they ended. README.md describes
/// the lines.
///
/// Threads: any.
class Recording {
  public:
    /// @param path          absolute
    /// @param adapterFile   whose calls they are, for the first line
    /// @param hasIdleReads  whether successful reads that gave nothing are lines too
    Recording(std::string path, std::string adapterFile, bool hasIdleReads);

    void Add(const Call& call);

    /// Lets the file go until the next call.
    void Rest();

  private:
    bool BeReady(int64_t now);
    bool GoOn();
    bool Begin(int64_t now);

    const std::string m_AdapterFile;
    const bool m_HasIdleReads;
    ThreadNumbers m_Threads;
    std::mutex m_Mutex; // guards everything below; held while a line is written, for the order
    OutputFile m_File;
    int64_t m_ZeroNs = 0; // when the recording began, on the clock of calls
    int64_t m_Lines = 0;  // with the first, which is no call
};

#endif
