// SPDX-License-Identifier: MIT
#ifndef KOVASMGR_ADAPTERS_SPY_OUTPUT_FILE_H
#define KOVASMGR_ADAPTERS_SPY_OUTPUT_FILE_H

#include <cstddef>
#include <cstdint>
#include <functional>
#include <string>
#include <string_view>

#include "adapters/shared/unique_fd.h"

/// A file of mode 0600 that grows by whole pieces. Nothing that goes wrong is more than one line in
/// the log: from then on nothing is written.
///
/// Threads: one at a time. To be used behind a CancelShield.
class OutputFile {
  public:
    /// @param path      absolute
    /// @param identity  how the file begins when this process has begun it; such a file goes on
    ///                  where it ended, when a host unloads the adapter and loads it again. Any
    ///                  other is emptied.
    OutputFile(std::string path, std::string identity);

    bool IsOpen() const { return m_File.IsOpen(); }

    /// @return false when nothing can be written, ever
    bool Open();

    /// Whether Open found the file begun.
    bool IsBegun() const { return m_IsBegun; }

    /// Appends the piece, all of it or nothing.
    bool Append(std::string_view piece);

    /// Lets the descriptor go; Open may follow.
    void Close() { m_File.Reset(); }

    /// So many bytes from a place of the file; fewer where it ends.
    std::string ReadAt(uint64_t place, size_t size) const;

    /// Reads the file from its beginning, piece by piece.
    void ReadAll(const std::function<void(std::string_view)>& take) const;

  private:
    std::string Trouble();
    bool BeginsWithIdentity() const;
    bool GiveUp(const std::string& reason);

    std::string m_Path;
    std::string m_Identity;
    UniqueFd m_File;
    bool m_IsRegular = false;
    bool m_IsBegun = false;
    bool m_HasFailed = false;
};

/// "1234-99887766": this process, told from an earlier one with its identifier.
std::string ProcessIdentity();

#endif
