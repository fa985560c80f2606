// SPDX-License-Identifier: MIT
#ifndef KOVASCTL_LIBRARY_H
#define KOVASCTL_LIBRARY_H

#include <cstdint>
#include <string>

#include "tools/kovasctl/adapter_place.h"
#include "tools/kovasctl/global_options.h"
#include "tools/kovasctl/log_directory.h"

/// The library, initialised for as long as this lives. One at a time.
class Library {
  public:
    /// Changes the current directory: resolve file arguments before.
    /// @throws Failure, WrongUse
    explicit Library(const GlobalOptions& options);
    ~Library();
    Library(const Library&) = delete;
    Library& operator=(const Library&) = delete;

    const AdapterPlace& Adapter() const { return m_Adapter; }

    /// For a call that is about to be made; see Explain.
    uint64_t Mark() const { return m_Log.Mark(); }

    /// "text: KOVAMGR_ERR_OSADAPT (20002)", with lines for the adapter's reason, when it gave one
    /// from the mark on, and for the log, which is kept then.
    std::string Explain(const std::string& text, long code, uint64_t mark,
                        const std::string& subject = "");

    /// The lines alone; empty when the adapter gave no reason.
    std::string Reason(uint64_t mark, const std::string& subject = "");

  private:
    std::string ReasonLines(const std::string& reason);
    void Initialise();

    AdapterPlace m_Adapter;
    LogDirectory m_Log;
};

#endif
