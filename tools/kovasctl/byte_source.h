// SPDX-License-Identifier: MIT
#ifndef KOVASCTL_BYTE_SOURCE_H
#define KOVASCTL_BYTE_SOURCE_H

#include <cstdint>
#include <optional>
#include <string>

#include "tools/kovasctl/unique_fd.h"

/// The bytes that are to be sent: a text, or what a descriptor gives.
class ByteSource {
  public:
    static ByteSource OfText(std::string text);
    static ByteSource OfStandardInput();

    /// Opens the file now, so its name is taken from the current directory of now.
    /// @throws WrongUse when it cannot be opened
    static ByteSource OfFile(const std::string& path);

    /// How many bytes there are in all; none when nobody knows yet.
    std::optional<uint64_t> Size() const { return m_Size; }

    /// Waits for the next bytes.
    /// @return empty at the end
    /// @throws Failure, Interrupted
    std::string Next();

  private:
    std::string m_Text;
    UniqueFd m_File;
    std::string m_Name; // for messages
    std::optional<uint64_t> m_Size;
};

#endif
