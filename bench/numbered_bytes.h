// SPDX-License-Identifier: MIT
#ifndef KOVASMGR_BENCH_NUMBERED_BYTES_H
#define KOVASMGR_BENCH_NUMBERED_BYTES_H

#include <cstddef>
#include <cstring>
#include <vector>

/// An endless row of bytes of which any part tells its place: who sends and who receives each keep
/// one, and a byte that is lost, doubled or changed is noticed. The row repeats after 251 bytes,
/// which divides no size that a terminal moves.
class NumberedBytes {
  public:
    static constexpr size_t kPeriod = 251;
    static constexpr size_t kLongest = 4096;

    NumberedBytes() : m_Row(kPeriod + kLongest) {
        for (size_t i = 0; i < m_Row.size(); ++i) {
            m_Row[i] = static_cast<unsigned char>(i % kPeriod);
        }
    }

    /// The next kLongest bytes.
    const unsigned char* Next() const { return m_Row.data() + m_Count % kPeriod; }

    /// So many of them are dealt with.
    void Pass(size_t count) { m_Count += count; }

    /// Whether these, at most kLongest, are the next ones; passes them.
    bool Expect(const void* data, size_t count) {
        const bool isExpected = count <= kLongest && std::memcmp(data, Next(), count) == 0;
        Pass(count);
        return isExpected;
    }

    size_t Count() const { return m_Count; }

  private:
    std::vector<unsigned char> m_Row;
    size_t m_Count = 0;
};

#endif
