// SPDX-License-Identifier: MIT
#ifndef KOVASMGR_TESTS_PROOF_MODEL_BARE_RUN_H
#define KOVASMGR_TESTS_PROOF_MODEL_BARE_RUN_H

#include <optional>

#include "tests/harness/scratch_directory.h"
#include "tests/proof/model/comparison.h"
#include "tests/proof/model/quirks.h"
#include "tests/proof/model/trace_file.h"

namespace model {

/// A place to compare many sequences without a read thread, each on a fresh manager. Standard output
/// is led away while it lives.
class BareRun {
  public:
    std::optional<Difference> Compare(const Sequence& sequence);

    const QuirkCounts& Quirks() const { return m_Quirks; }
    long Steps() const { return m_Steps; }

  private:
    ScratchDirectory m_Scratch;
    TraceFile m_Trace;
    QuirkCounts m_Quirks{};
    long m_Steps = 0;
};

} // namespace model

#endif
