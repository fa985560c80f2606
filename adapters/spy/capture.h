// SPDX-License-Identifier: MIT
#ifndef KOVASMGR_ADAPTERS_SPY_CAPTURE_H
#define KOVASMGR_ADAPTERS_SPY_CAPTURE_H

#include <cstdint>
#include <mutex>
#include <string>
#include <unordered_map>

#include "adapters/spy/call.h"
#include "adapters/spy/output_file.h"

/// A file with the bytes that went over the ports, for programs that show network traffic: an
/// interface for each port, a packet for each write and read that moved something.
///
/// Threads: any.
class Capture {
  public:
    /// @param path         absolute
    /// @param adapterFile  whose ports they are, for a comment
    Capture(std::string path, const std::string& adapterFile);

    void Add(const Call& call);

    /// Lets the file go until the next call that moves something.
    void Rest();

  private:
    bool BeReady();
    bool GoOn();
    bool FindInterface(const KnownPort* port, uint32_t& interface);
    void AddPackets(uint32_t interface, const Call& call);

    const std::string m_Section;
    std::mutex m_Mutex; // guards everything below
    OutputFile m_File;
    int64_t m_RealAheadNs = 0;                              // CLOCK_REALTIME minus CLOCK_MONOTONIC
    std::unordered_map<std::string, uint32_t> m_Interfaces; // by the names of their ports
};

#endif
