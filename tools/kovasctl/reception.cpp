// SPDX-License-Identifier: MIT
#include "tools/kovasctl/reception.h"

#include <algorithm>

void Reception::Accept(std::string& bytes) {
    if (m_Count && bytes.size() >= *m_Count - m_Received) {
        bytes.resize(*m_Count - m_Received);
        m_IsComplete = true;
    }
    if (!m_Until.empty()) {
        CutBehindText(bytes);
    }
    m_Received += bytes.size();
}

void Reception::CutBehindText(std::string& bytes) {
    const std::string seen = m_Tail + bytes;
    const size_t found = seen.find(m_Until);
    if (found != std::string::npos) {
        bytes.resize(found + m_Until.size() - m_Tail.size());
        m_IsComplete = true;
    }
    m_Tail = seen.substr(seen.size() - std::min(seen.size(), m_Until.size() - 1));
}
