// SPDX-License-Identifier: MIT
#ifndef KOVASCTL_SIM_WORKPLACE_H
#define KOVASCTL_SIM_WORKPLACE_H

#include <string>

#include "tools/kovasctl/adapter_place.h"
#include "tools/kovasctl/log_directory.h"

/// The directory that a simulated host runs in: it holds a link to the adapter, which is where the
/// library looks first, and takes the log of a host that writes it where it stands. An adapter's own
/// directory may be one that nobody can write to.
class SimWorkplace {
  public:
    /// @param given  a directory; empty: a private one
    /// @throws WrongUse when it is none; Failure when the link cannot be made, or it holds another
    ///         adapter
    SimWorkplace(const std::string& given, const AdapterPlace& adapter);
    ~SimWorkplace();
    SimWorkplace(const SimWorkplace&) = delete;
    SimWorkplace& operator=(const SimWorkplace&) = delete;

    const std::string& Path() const { return m_Directory.Path(); }

    /// After the host has ended: keeps the directory when it failed or left something else than its
    /// log, and says so.
    void Look(int status);

  private:
    bool HasMoreThanTheLog() const;

    LogDirectory m_Directory;
    std::string m_Link;
    bool m_IsPrivate;
};

#endif
