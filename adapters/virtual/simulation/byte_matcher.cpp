// SPDX-License-Identifier: MIT
#include "adapters/virtual/simulation/byte_matcher.h"

#include <algorithm>
#include <utility>

void ByteMatcher::Add(std::string bytes, size_t number) {
    m_Longest = std::max(m_Longest, bytes.size());
    m_Texts.push_back({std::move(bytes), number});
}

std::optional<size_t> ByteMatcher::Take(char byte) {
    if (m_Seen.size() >= 2 * m_Longest) {
        m_Seen.erase(0, m_Seen.size() - m_Longest);
    }
    m_Seen += byte;
    for (const Text& text : m_Texts) {
        if (IsAtEnd(text.bytes)) {
            Restart();
            return text.number;
        }
    }
    return std::nullopt;
}

bool ByteMatcher::IsAtEnd(const std::string& bytes) const {
    return m_Seen.size() >= bytes.size() && m_Seen.back() == bytes.back() &&
           m_Seen.compare(m_Seen.size() - bytes.size(), bytes.size(), bytes) == 0;
}
