// SPDX-License-Identifier: MIT
//
// The byte searches beside the plain loops that the benchmarks know, on blocks of memory that end
// where the texts do.
//
// Input: the function (Byte), how often the haystack is there (Byte), a length to claim for the
// haystack and one for the needle (Byte each: 0 to 249 leave it true, the others are small, negative
// or no text at all), the needle's length (Byte), the needle, the haystack.
#include <climits>
#include <cstring>
#include <memory>

#include "KOVASMgrSearch.h"
#include "bench/plain_search.h"
#include "tests/proof/fuzz/fuzz_input.h"

namespace {

constexpr size_t kMaxHay = 16384;

/// A text with nothing behind it, and the length that a caller claims, which is never too long.
class Block {
  public:
    Block(const std::string& text, uint8_t claim)
        : m_Bytes(new char[text.size()]), m_Length(static_cast<int>(text.size())),
          m_IsNull(claim == kNoText) {
        std::memcpy(m_Bytes.get(), text.data(), text.size());
        m_Length = Claimed(claim);
    }

    const char* Text() const { return m_IsNull ? nullptr : m_Bytes.get(); }
    int Length() const { return m_Length; }

  private:
    static constexpr uint8_t kNoText = 255;

    int Claimed(uint8_t claim) const {
        switch (claim) {
        case 254:
            return INT_MIN;
        case 253:
            return -1;
        case 252:
            return 0;
        case 251:
            return m_Length / 2;
        case 250:
            return m_Length - 1;
        default:
            return m_Length;
        }
    }

    std::unique_ptr<char[]> m_Bytes;
    int m_Length;
    bool m_IsNull;
};

std::string Repeated(const std::string& text, size_t times) {
    std::string repeated;
    for (size_t i = 0; i < times && repeated.size() + text.size() <= kMaxHay; ++i) {
        repeated += text;
    }
    return repeated;
}

void CompareSearches(const Block& hay, const Block& needle) {
    Demand(SubMem(hay.Text(), hay.Length(), needle.Text(), needle.Length()) ==
               PlainSubMem(hay.Text(), hay.Length(), needle.Text(), needle.Length()),
           "SubMem finds what the plain loop finds");
    Demand(SubCaseMem(hay.Text(), hay.Length(), needle.Text(), needle.Length()) ==
               PlainSubCaseMem(hay.Text(), hay.Length(), needle.Text(), needle.Length()),
           "SubCaseMem finds what the plain loop finds");
}

// The needle at the start of a haystack of its own length is the comparison.
void CompareComparison(const Block& s, const Block& pattern) {
    const int length = std::min(s.Length(), pattern.Length());
    Demand(memcasecmp(s.Text(), pattern.Text(), length) ==
               PlainSubCaseMem(s.Text(), length, pattern.Text(), length),
           "memcasecmp agrees with the plain loop");
}

} // namespace

extern "C" int LLVMFuzzerInitialize(int*, char***) { return 0; }

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    FuzzInput input(data, size);
    const bool isComparison = input.Byte() % 2 == 1;
    const size_t times = input.Byte() + size_t{1};
    const uint8_t hayClaim = input.Byte();
    const uint8_t needleClaim = input.Byte();
    const std::string needleText = input.Text(input.Byte());
    const Block needle(needleText, needleClaim);
    const Block hay(Repeated(input.Rest(), times), hayClaim);
    if (isComparison) {
        CompareComparison(hay, needle);
    } else {
        CompareSearches(hay, needle);
    }
    return 0;
}
