// SPDX-License-Identifier: MIT
#ifndef KOVASCTL_LOG_DIRECTORY_H
#define KOVASCTL_LOG_DIRECTORY_H

#include <cstdint>
#include <string>

/// Where this run's "KOVASMgr.log" is: in a directory that the person names, or in a private one
/// below the user's state directory, which is removed unless it is worth keeping.
class LogDirectory {
  public:
    /// @param given  empty: a private directory; one that is not there is made, for its owner alone
    /// @throws WrongUse when the given one cannot be made or is no directory; Failure when none can be made
    explicit LogDirectory(const std::string& given);
    ~LogDirectory();
    LogDirectory(const LogDirectory&) = delete;
    LogDirectory& operator=(const LogDirectory&) = delete;

    const std::string& Path() const { return m_Path; }
    std::string File() const { return m_Path + "/KOVASMgr.log"; }
    void Keep() { m_IsKept = true; }

    /// Where the next line will stand.
    uint64_t Mark() const;

    /// The last reason that the adapter gave from the mark on; empty when it gave none. An adapter
    /// does not repeat a reason: when there is none, the last one of this run that has the subject's
    /// name in it.
    std::string ReasonSince(uint64_t mark, const std::string& subject) const;

  private:
    std::string m_Path;
    bool m_IsKept;
    uint64_t m_Start; // of this run
};

#endif
