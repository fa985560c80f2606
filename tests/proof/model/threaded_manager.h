// SPDX-License-Identifier: MIT
#ifndef KOVASMGR_TESTS_PROOF_MODEL_THREADED_MANAGER_H
#define KOVASMGR_TESTS_PROOF_MODEL_THREADED_MANAGER_H

#include <string>

#include "tests/proof/model/real_manager.h"

namespace model {

/// The library as hosts have it: KOVAMGR_Init loads an adapter and starts the read thread. Between the
/// sweeps of a sequence the thread goes on sweeping, and finds nothing.
class ThreadedManager : public RealManager {
  public:
    ThreadedManager(const std::string& logDirectory, TraceFile& trace);
    ~ThreadedManager() override;

    /// Without the lines of the thread's start and end, whose order is not fixed.
    std::string TakeLog() override;

  protected:
    int Init() override;
    void Sweep() override;
    void Scripted() override {} // what is missing is the adapter's file's business
};

} // namespace model

#endif
