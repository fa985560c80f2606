// SPDX-License-Identifier: MIT
#include "adapters/virtual/simulation/recorded_talk.h"

#include <algorithm>

std::vector<RecordedTalk::Piece> RecordedTalk::Open(ScenarioTime now) {
    m_Opening = m_Next < m_Openings.size() ? &m_Openings[m_Next++] : nullptr;
    m_NextPiece = 0;
    m_Taken = 0;
    m_Differs = false;
    m_LastCause = now;
    return TakePieces(now);
}

RecordedTalk::Answer RecordedTalk::Take(char byte, ScenarioTime now) {
    Answer answer;
    answer.differs = !m_Differs && !IsAsRecorded(byte);
    m_Differs = m_Differs || answer.differs;
    ++m_Taken;
    answer.pieces = TakePieces(now);
    return answer;
}

bool RecordedTalk::IsAsRecorded(char byte) const {
    return m_Opening != nullptr && m_Taken < m_Opening->fromHost.size() &&
           m_Opening->fromHost[m_Taken] == byte;
}

// The cause of a piece is what came last: the piece before or the byte that it needs.
std::vector<RecordedTalk::Piece> RecordedTalk::TakePieces(ScenarioTime now) {
    std::vector<Piece> pieces;
    if (m_Opening == nullptr) {
        return pieces;
    }
    const std::vector<RecordedPiece>& recorded = m_Opening->pieces;
    while (m_NextPiece < recorded.size() && recorded[m_NextPiece].hostBytes <= m_Taken) {
        const RecordedPiece& piece = recorded[m_NextPiece++];
        m_LastCause = std::max(m_LastCause, now) + piece.delay;
        pieces.push_back({m_LastCause, &piece.bytes});
    }
    return pieces;
}
