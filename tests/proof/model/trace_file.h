// SPDX-License-Identifier: MIT
#ifndef KOVASMGR_TESTS_PROOF_MODEL_TRACE_FILE_H
#define KOVASMGR_TESTS_PROOF_MODEL_TRACE_FILE_H

#include <cstdio>
#include <string>

namespace model {

/// Standard output, led into a file while this lives, so that the manager's trace lines can be
/// compared. What the test itself prints meanwhile would be taken for them.
class TraceFile {
  public:
    TraceFile();
    ~TraceFile();
    TraceFile(const TraceFile&) = delete;
    TraceFile& operator=(const TraceFile&) = delete;

    /// What was printed since the last time.
    std::string Take();

  private:
    std::FILE* m_File;
    int m_Before;
};

} // namespace model

#endif
