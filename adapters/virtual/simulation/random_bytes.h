// SPDX-License-Identifier: MIT
#ifndef KOVASMGR_ADAPTERS_VIRTUAL_RANDOM_BYTES_H
#define KOVASMGR_ADAPTERS_VIRTUAL_RANDOM_BYTES_H

#include <cstddef>
#include <cstdint>
#include <string>

/// Bytes that look random and are the same for the same seed and purpose, on every machine. Not for
/// secrets.
///
/// Threads: one at a time.
class RandomBytes {
  public:
    /// @param purpose  makes another sequence of the same seed
    RandomBytes(uint64_t seed, const std::string& purpose);

    std::string Next(size_t count);

  private:
    uint64_t NextNumber();

    uint64_t m_State;
};

#endif
