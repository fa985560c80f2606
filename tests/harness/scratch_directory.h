// SPDX-License-Identifier: MIT
#ifndef KOVASMGR_TESTS_HARNESS_SCRATCH_DIRECTORY_H
#define KOVASMGR_TESTS_HARNESS_SCRATCH_DIRECTORY_H

#include <string>

/// A fresh directory below the build tree that is the current directory while this object lives,
/// with an empty subdirectory "log". Removed at the end with all that is in it.
class ScratchDirectory {
  public:
    ScratchDirectory();

    /// With this scripted adapter in it: "complete", or "lacks_OS_ADAPT_Read" and the like.
    explicit ScratchDirectory(const std::string& adapter);
    ~ScratchDirectory();
    ScratchDirectory(const ScratchDirectory&) = delete;
    ScratchDirectory& operator=(const ScratchDirectory&) = delete;

    /// Absolute, links resolved, no separator at the end.
    const std::string& Path() const { return m_Path; }
    std::string LogDirectory() const { return m_Path + "/log"; }
    std::string LogFile() const { return LogDirectory() + "/KOVASMgr.log"; }

    /// Links an adapter into the directory, in place of one that is there.
    void UseAdapter(const std::string& adapter, const std::string& name = "libOSAdapt.so") const;

    /// Where an adapter's file lies.
    static std::string AdapterFile(const std::string& adapter);

  private:
    std::string m_Before;
    std::string m_Path;
};

#endif
