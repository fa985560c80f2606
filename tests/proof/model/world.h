// SPDX-License-Identifier: MIT
#ifndef KOVASMGR_TESTS_PROOF_MODEL_WORLD_H
#define KOVASMGR_TESTS_PROOF_MODEL_WORLD_H

#include <array>
#include <deque>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

#include "OSAdapt.h"
#include "tests/proof/model/operation.h"

namespace model {

/// The adapter as a sequence scripts it, and the list of what it was asked. Two worlds that got the
/// same script answer the same calls alike, so one serves the manager and one the model.
///
/// Threads: all; each call is one step.
class World {
  public:
    /// Takes one step of the script.
    void Apply(const Operation& operation);

    // The adapter's functions.
    int Register();
    int UnRegister();
    int Open(const char* portName, int* handle);
    int Close(int handle);
    int Write(int handle, const void* data, long length, long* written);
    int Read(int handle, void* buffer, long size, long* read);
    int Enum(int which, _OS_ADAPT_DEVICEPORTLIST* list);

    /// Which function is not there; kFunctions when all are.
    int Missing() const { return m_Missing; }
    bool IsComplete() const { return m_Missing == kFunctions; }

    /// From now on only so many reads are answered from the script and noted; all others find
    /// nothing. Without a number, all are.
    void LimitReads(std::optional<long> count);
    bool HasReadsLeft();

    /// Does not note what a read finds in its length: reads that are not noted came between.
    void IgnoreLengthBeforeRead() { m_bLengthNoted = false; }

    /// Whether the next read will store a count.
    bool StoresNextCount();

    /// Notes what else happened, in the order of the adapter's calls.
    void Note(const std::string& event);

    /// What happened since the last time.
    std::vector<std::string> TakeEvents();

    /// What a callback does when it is called; null for nothing.
    const Operation* ActionOf(bool isState, int callback) const;

  private:
    struct Answer {
        int result = OS_ADAPT_OK;
        int times = 0; // 0: always
    };
    using Lock = std::lock_guard<std::mutex>;

    int ResultOf(Function function);
    void TakeRead(void* buffer, long size, long* read);

    std::mutex m_Mutex;
    Table m_Table;
    std::array<Answer, kFunctions> m_Answers{};
    std::optional<Operation> m_NextHandle;
    int m_LastHandle = 0;
    Operation m_WriteCount;
    std::deque<ReadAnswer> m_Reads;
    std::optional<long> m_ReadsLeft;
    bool m_bLengthNoted = true;
    int m_Missing = kFunctions;
    std::array<std::array<std::vector<Operation>, 4>, 2> m_Actions;
    std::vector<std::string> m_Events;
};

/// Writes a table into a zeroed record, as far as the record reaches.
void Fill(_OS_ADAPT_DEVICEPORTLIST& list, const Table& table);

} // namespace model

#endif
