// SPDX-License-Identifier: MIT
//
// What the fuzz targets share: taking an input apart, and saying that a promise is broken.
#ifndef KOVASMGR_TESTS_PROOF_FUZZ_FUZZ_INPUT_H
#define KOVASMGR_TESTS_PROOF_FUZZ_FUZZ_INPUT_H

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string>

// How libFuzzer, or replay.cpp in builds without it, calls a target.
extern "C" int LLVMFuzzerInitialize(int* argc, char*** argv);
extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size);

/// An input, read from front to back. Behind its end everything is zero or empty.
class FuzzInput {
  public:
    FuzzInput(const uint8_t* data, size_t size)
        : m_Next(reinterpret_cast<const char*>(data)), m_End(m_Next + size) {}

    bool IsAtEnd() const { return m_Next == m_End; }

    uint8_t Byte() { return IsAtEnd() ? uint8_t{0} : static_cast<uint8_t>(*m_Next++); }

    /// Four bytes, the lowest first.
    int32_t Number() {
        uint32_t number = 0;
        for (unsigned shift = 0; shift < 32; shift += 8) {
            number |= static_cast<uint32_t>(Byte()) << shift;
        }
        return static_cast<int32_t>(number);
    }

    /// Up to so many bytes.
    std::string Text(size_t most) {
        const size_t length = std::min(most, static_cast<size_t>(m_End - m_Next));
        const std::string text(m_Next, length);
        m_Next += length;
        return text;
    }

    std::string Rest() { return Text(SIZE_MAX); }

  private:
    const char* m_Next;
    const char* m_End;
};

/// Ends the process, which is how a target reports that a promise is broken.
inline void Demand(bool isKept, const char* promise) {
    if (!isKept) {
        std::fprintf(stderr, "== broken promise: %s\n", promise);
        std::abort();
    }
}

#endif
