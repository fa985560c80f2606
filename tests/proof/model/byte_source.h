// SPDX-License-Identifier: MIT
#ifndef KOVASMGR_TESTS_PROOF_MODEL_BYTE_SOURCE_H
#define KOVASMGR_TESTS_PROOF_MODEL_BYTE_SOURCE_H

#include <cstddef>
#include <cstdint>
#include <vector>

namespace model {

/// Bytes, one after the other, that decide something; zeros when they are used up.
class ByteSource {
  public:
    ByteSource(const std::uint8_t* bytes, std::size_t size) : m_Bytes(bytes), m_Size(size) {}
    explicit ByteSource(const std::vector<std::uint8_t>& bytes)
        : ByteSource(bytes.data(), bytes.size()) {}

    bool IsEmpty() const { return m_Next >= m_Size; }

    std::uint8_t Next() { return IsEmpty() ? std::uint8_t{0} : m_Bytes[m_Next++]; }

    /// 0 .. count - 1; count is 256 at most.
    int Below(int count) { return Next() % count; }
    std::size_t IndexBelow(std::size_t count) { return Next() % count; }

    /// Once in so many times.
    bool OneIn(int count) { return Below(count) == count - 1; }

    template <typename Value, std::size_t size> const Value& Pick(const Value (&values)[size]) {
        return values[Next() % size];
    }

  private:
    const std::uint8_t* m_Bytes;
    std::size_t m_Size;
    std::size_t m_Next = 0;
};

/// As many random bytes, always the same for one seed.
std::vector<std::uint8_t> RandomBytes(std::uint64_t seed, std::size_t least, std::size_t most);

} // namespace model

#endif
