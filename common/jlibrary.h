// SPDX-License-Identifier: MIT
#ifndef KOVASMGR_COMMON_JLIBRARY_H
#define KOVASMGR_COMMON_JLIBRARY_H

#include <string>

/// A shared library loaded at run time.
class JLibrary {
  public:
    /// Loads the library that the path names, all symbols bound at once and kept local.
    ///
    /// The path's last part is the plain name ("OSAdapt"). In the path's directory the regular
    /// files (links followed) "lib<name>.so", "<name>.so" and "<name>" are tried in this order
    /// (".dylib" on macOS), and the first that exists is loaded. If none exists, the same in the
    /// adapter directory that was fixed at build time. A file that exists but does not load ends
    /// the search. A process with raised privileges looks in the adapter directory only.
    explicit JLibrary(const std::string& path);

    /// Does not unload.
    ~JLibrary() = default;
    JLibrary(const JLibrary&) = delete;
    JLibrary& operator=(const JLibrary&) = delete;

    /// @return the symbol's address; null when it is missing or nothing is loaded.
    void* resolve(const char* name) const;

    /// Unloads; addresses resolved before are invalid then. A further call does nothing.
    void unload();

  private:
    void* m_pHandle;
};

#endif
