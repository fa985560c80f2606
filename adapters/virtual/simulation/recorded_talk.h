// SPDX-License-Identifier: MIT
#ifndef KOVASMGR_ADAPTERS_VIRTUAL_RECORDED_TALK_H
#define KOVASMGR_ADAPTERS_VIRTUAL_RECORDED_TALK_H

#include <cstddef>
#include <string>
#include <vector>

#include "adapters/virtual/language/scenario.h"

/// A far end that says what it said in a recording: each piece when the host has sent as much as it
/// had then, and no sooner after that than it did.
///
/// Threads: one at a time.
class RecordedTalk {
  public:
    struct Piece {
        ScenarioTime due;
        const std::string* bytes;
    };

    struct Answer {
        bool differs = false; // this byte is the first of the opening that is not the recorded one
        std::vector<Piece> pieces;
    };

    /// @param openings  must outlive this object; there may be none
    explicit RecordedTalk(const std::vector<RecordedOpening>& openings) : m_Openings(openings) {}

    /// The host opens the port: the next opening of the recording begins. After the last one
    /// nothing comes any more.
    std::vector<Piece> Open(ScenarioTime now);

    /// The host has sent a byte.
    Answer Take(char byte, ScenarioTime now);

    /// How many bytes the host has sent since it opened the port.
    size_t Taken() const { return m_Taken; }

  private:
    bool IsAsRecorded(char byte) const;
    std::vector<Piece> TakePieces(ScenarioTime now);

    const std::vector<RecordedOpening>& m_Openings;
    const RecordedOpening* m_Opening = nullptr; // null: none yet, or none any more
    size_t m_Next = 0;                          // of the openings
    size_t m_NextPiece = 0;
    size_t m_Taken = 0;
    bool m_Differs = false;
    ScenarioTime m_LastCause{0};
};

#endif
