// SPDX-License-Identifier: MIT
#ifndef KOVASMGR_TESTS_PROOF_MODEL_SUBJECT_H
#define KOVASMGR_TESTS_PROOF_MODEL_SUBJECT_H

#include <memory>
#include <string>

#include "KOVASMgr.h"
#include "tests/proof/model/operation.h"
#include "tests/proof/model/state.h"
#include "tests/proof/model/world.h"

namespace model {

/// What a call gave back.
struct Outcome {
    static constexpr long kUntouched = -987654321;

    long result = 0;
    long stored = kUntouched; ///< through the result pointer
    std::string data = {};    ///< kReadHandle: the buffer
};

bool operator==(const Outcome& left, const Outcome& right);
std::string Describe(const Outcome& outcome);

/// A manager that a sequence is run on: the real one or the model, each with its own copy of the
/// adapter, of the host and of the host's enumeration record.
class Subject {
  public:
    Subject();
    virtual ~Subject() = default;
    Subject(const Subject&) = delete;
    Subject& operator=(const Subject&) = delete;

    /// One step.
    Outcome Do(const Operation& operation);

    World& Adapter() { return m_World; }

    /// What it knows now.
    virtual State Snapshot() = 0;

    /// The log and the trace lines since the last time, every time stamp replaced by "[TIME]".
    virtual std::string TakeLog() = 0;
    virtual std::string TakeTrace() = 0;

    /// The host's enumeration record.
    _KOVAMGR_DEVICEINFOLIST& Record() { return *m_Record; }

    /// Whether it was handed to the manager since the last time.
    bool TakeIsRecordUsed();

    // The host's callbacks: note the call, then do what the script says.
    void OnRead(int callback, const void* data, int length);
    void OnState(int callback, int state);

  protected:
    virtual Outcome Call(const Operation& operation) = 0;

    /// After the script has changed something.
    virtual void Scripted() {}

    /// Fills the enumeration record with something that must be overwritten, or left alone.
    void SoilRecord();

  private:
    void Act(bool isState, int callback);

    World m_World;
    std::unique_ptr<_KOVAMGR_DEVICEINFOLIST> m_Record;
    bool m_bRecordUsed = false;
    int m_Acts = 0; // of the step under way
};

} // namespace model

#endif
