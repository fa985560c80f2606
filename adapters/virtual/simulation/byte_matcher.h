// SPDX-License-Identifier: MIT
#ifndef KOVASMGR_ADAPTERS_VIRTUAL_BYTE_MATCHER_H
#define KOVASMGR_ADAPTERS_VIRTUAL_BYTE_MATCHER_H

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

/// Finds texts in a stream of bytes that comes in pieces of any size. A text is found when the
/// bytes since the last find end with it; of several that end at one byte, the first that was added.
///
/// Threads: one at a time.
class ByteMatcher {
  public:
    /// @param bytes  at least one
    void Add(std::string bytes, size_t number);

    /// The next byte of the stream.
    /// @return the number of the text that ends with it, if one does
    std::optional<size_t> Take(char byte);

    /// The stream begins anew.
    void Restart() { m_Seen.clear(); }

    bool IsEmpty() const { return m_Texts.empty(); }

  private:
    struct Text {
        std::string bytes;
        size_t number;
    };

    bool IsAtEnd(const std::string& bytes) const;

    std::vector<Text> m_Texts;
    size_t m_Longest = 0;
    std::string m_Seen; // since the last find, with more than the longest text cut off now and then
};

#endif
