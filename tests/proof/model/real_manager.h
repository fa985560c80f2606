// SPDX-License-Identifier: MIT
#ifndef KOVASMGR_TESTS_PROOF_MODEL_REAL_MANAGER_H
#define KOVASMGR_TESTS_PROOF_MODEL_REAL_MANAGER_H

#include <string>
#include <vector>

#include "tests/proof/model/file_tail.h"
#include "tests/proof/model/subject.h"
#include "tests/proof/model/trace_file.h"

namespace model {

/// The library, called through its exported functions where there are such. It is made without its
/// read thread: sweeps run when a sequence says so, on the calling thread, so that the whole is
/// deterministic. One at a time.
class RealManager : public Subject {
  public:
    /// @param logDirectory  an existing directory; the log is opened at the first use of the process
    RealManager(std::string logDirectory, TraceFile& trace);

    /// Releases what the sequence has left.
    ~RealManager() override;

    State Snapshot() override;
    std::string TakeLog() override { return MaskStamps(m_Log.Take()); }
    std::string TakeTrace() override { return m_Trace.Take(); }

  protected:
    Outcome Call(const Operation& operation) override;
    void Scripted() override;

    virtual int Init(); ///< in the log directory
    virtual int Notice(int status);
    virtual void Sweep();

    const std::string& LogDirectory() const { return m_LogDirectory; }

  private:
    Outcome CallInside(const Operation& operation);
    Outcome Write(const Operation& operation);
    Outcome ReadHandle(int handle);

    std::string m_LogDirectory;
    FileTail m_Log;
    TraceFile& m_Trace;
    std::vector<char> m_Buffer; // of the read loop
    long m_Length = 0;
};

} // namespace model

#endif
