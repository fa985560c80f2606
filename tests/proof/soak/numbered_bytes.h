// SPDX-License-Identifier: MIT
#ifndef KOVASMGR_TESTS_PROOF_SOAK_NUMBERED_BYTES_H
#define KOVASMGR_TESTS_PROOF_SOAK_NUMBERED_BYTES_H

#include <atomic>
#include <cstddef>
#include <cstdint>

/// One end of an endless stream in which each byte follows from its number, so that one which is
/// lost, doubled or out of order shows within a few bytes. No stretch of it occurs a second time.
///
/// Threads: one, and any for Position.
class NumberedBytes {
  public:
    /// Which of many streams, of which no two are alike; before the first byte.
    void SetStream(uint64_t stream) { m_Stream = stream; }

    /// The next bytes, which stay the next ones until Advance.
    void Peek(char* buffer, std::size_t count) const {
        for (std::size_t i = 0; i < count; ++i) {
            buffer[i] = At(m_Position + i);
        }
    }

    void Advance(std::size_t count) { m_Position += count; }

    /// Compares bytes that have arrived with the next ones, and goes past them.
    /// @return how many are as expected, from the front
    std::size_t Take(const char* bytes, std::size_t count) {
        std::size_t right = 0;
        while (right < count && bytes[right] == At(m_Position + right)) {
            ++right;
        }
        m_Position += count;
        return right;
    }

    uint64_t Position() const { return m_Position; }

  private:
    char At(uint64_t number) const {
        uint64_t mixed = (number + (m_Stream << 48) + 1) * 0x9E3779B97F4A7C15;
        mixed = (mixed ^ (mixed >> 31)) * 0xBF58476D1CE4E5B9;
        return static_cast<char>(mixed >> 56);
    }

    uint64_t m_Stream = 0;
    std::atomic<uint64_t> m_Position{0};
};

#endif
