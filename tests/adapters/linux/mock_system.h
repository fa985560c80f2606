// SPDX-License-Identifier: MIT
#ifndef KOVASMGR_TESTS_ADAPTERS_LINUX_MOCK_SYSTEM_H
#define KOVASMGR_TESTS_ADAPTERS_LINUX_MOCK_SYSTEM_H

#include <string>

/// A directory of plain files that this process sees as its /sys, and as the nodes in /dev that are
/// made in it, while this object lives. The rest of /dev is the machine's.
///
/// Paths begin with "/sys/" or "/dev/". The work is done by umockdev's library, which must have
/// been preloaded.
class MockSystem {
  public:
    /// Throws when the library is not preloaded.
    MockSystem();
    ~MockSystem();
    MockSystem(const MockSystem&) = delete;
    MockSystem& operator=(const MockSystem&) = delete;

    std::string Root() const { return m_Root; }

    bool Exists(const std::string& path) const;
    void MakeDirectory(const std::string& path) const;

    /// Creates what is missing of its directories.
    void WriteFile(const std::string& path, const std::string& bytes) const;

    /// A link whose target is given by its absolute path here; relative, as in the real /sys.
    void Link(const std::string& path, const std::string& target) const;

    /// A terminal node that leads to this terminal.
    void MakeNode(const std::string& path, const std::string& terminal,
                  const std::string& number) const;

    /// Takes a directory or file away, if it is there. What comes later has another inode number,
    /// as in the real /sys.
    void Remove(const std::string& path);

  private:
    std::string Real(const std::string& path) const { return m_Root + path; }

    std::string m_Root;
    int m_Graves = 0;
};

#endif
