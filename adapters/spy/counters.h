// SPDX-License-Identifier: MIT
#ifndef KOVASMGR_ADAPTERS_SPY_COUNTERS_H
#define KOVASMGR_ADAPTERS_SPY_COUNTERS_H

#include <memory>
#include <mutex>
#include <string>

#include "OSAdaptSpy.h"
#include "adapters/spy/call.h"
#include "adapters/spy/counter_directory.h"

/// Counts calls in a file that other programs look into, from Start to End. That it cannot be made
/// is one line in the log, and nothing is counted then.
///
/// Threads: any.
class Counters {
  public:
    explicit Counters(std::string adapterFile);

    /// Counts from zero, unless it is counting.
    void Start();

    void Add(const Call& call);

    /// Removes the file. Calls that are being added may still do so.
    void End();

  private:
    struct Unmap {
        void operator()(OSADAPT_SPY_COUNTERS* file) const;
    };
    using File = std::shared_ptr<OSADAPT_SPY_COUNTERS>; // mapped

    void Begin();
    File Current() const;
    File MakeFile();
    OSADAPT_SPY_PORT& RecordOf(OSADAPT_SPY_COUNTERS& file, const KnownPort& port);

    const std::string m_AdapterFile;
    mutable std::mutex m_Mutex; // guards everything below
    std::unique_ptr<CounterDirectory> m_Directory;
    File m_File;
    bool m_HasFailed = false; // since the last End
};

#endif
