// SPDX-License-Identifier: MIT
//
// The manager's rules once more, as plainly as they can be written: for a reader to check against
// docs/kept-behaviour.md and the public headers, and for random sequences to be compared with.
//
// One file for each group of rules: model_life.cpp, model_ports.cpp, model_callbacks.cpp,
// model_sweep.cpp, model_enumeration.cpp, model_arrival.cpp, model_removal.cpp, model_notice.cpp,
// model_log.cpp; model.cpp leads each call to its rule. Nothing here uses the library's code.
#ifndef KOVASMGR_TESTS_PROOF_MODEL_MODEL_H
#define KOVASMGR_TESTS_PROOF_MODEL_MODEL_H

#include <string>

#include "tests/proof/model/quirks.h"
#include "tests/proof/model/subject.h"

namespace model {

class Model : public Subject {
  public:
    /// What KOVAMGR_Init does beside the first scan.
    enum class Start {
        kScanOnly, ///< nothing: no thread, no registration
        kFull      ///< the registration and the read thread
    };

    Model(Start start, QuirkCounts& quirks);

    State Snapshot() override;
    std::string TakeLog() override;
    std::string TakeTrace() override;

  protected:
    Outcome Call(const Operation& operation) override;

  private:
    // model.cpp
    Outcome CallInside(const Operation& operation);

    // model_life.cpp
    int Init(const Operation& operation);
    int Release();
    void ReleaseManager();
    void CloseAll();

    // model_ports.cpp
    int Open(int id);
    int Close(int id);
    int CloseAnyTime(int id);
    int Close(Port& port);
    Outcome Write(const Operation& operation);
    Outcome WriteChecked(const Operation& operation, long length);
    Outcome ReadHandle(int handle);
    Port* FindPort(int id);

    // model_callbacks.cpp
    int AddRead(int id, int callback);
    int RemoveRead(int id, int callback);
    int CheckRead(int id);
    int AddState(int callback);
    int RemoveState(int callback);

    // model_sweep.cpp
    void Sweep();
    void ReadPort(std::size_t at);
    void Deliver(std::size_t at, char* data, int length);

    // model_enumeration.cpp
    int Enumerate(_KOVAMGR_DEVICEINFOLIST& list);

    // model_notice.cpp
    int Notice(int status);

    // model_arrival.cpp
    void Arrival();
    void Arrive(const _OS_ADAPT_DEVICEPORTINFO& entry, const _OS_ADAPT_PORTINFO& portEntry);
    bool IsKnown(const Port& port);
    int NumberFor(int proposed);
    void AddToTree(const Port& port);

    // model_removal.cpp
    void Removal();
    const _OS_ADAPT_DEVICEPORTINFO* EntryOf(const Device& device);
    void CompareDevice(std::size_t at, const _OS_ADAPT_DEVICEPORTINFO& entry);
    void Vanish(const Port& treeCopy);
    void ReleaseDevice(const std::string& name);
    void DeletePort(int id);

    /// Asks the adapter what is attached; false when that failed.
    bool EnumerateAdapter();

    // model_log.cpp
    void Log(const std::string& text);
    void LogError(const std::string& text);
    void LogName(const std::string& name);
    void Trace(const std::string& line);

    // model_quirks.cpp
    void CountList();
    void CountNumber(int id, int proposed, int lastBefore);
    void CountUnchanged(const Device& device, const _OS_ADAPT_DEVICEPORTINFO& entry);
    void CountVanishing(const Device& device, const Port& port,
                        const _OS_ADAPT_DEVICEPORTINFO& entry);
    void CountState();
    void Count(Quirk quirk) { Note(m_Quirks, quirk); }
    void CountIf(bool isMet, Quirk quirk) {
        if (isMet) {
            Count(quirk);
        }
    }

    State m_State;
    Start m_Start;
    QuirkCounts& m_Quirks;
    _OS_ADAPT_DEVICEPORTLIST m_List{}; // what the adapter reported last
    long m_Length = 0;                 // of the read loop
    int m_Notices = 0;                 // under way
    std::string m_Log;
    std::string m_Trace;
};

} // namespace model

#endif
