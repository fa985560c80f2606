// SPDX-License-Identifier: MIT
//
// Both searches slide the needle over the haystack, from the left, without a table. What makes them
// fast is that eight start positions at a time are looked at through two words, the one where the
// needle's first byte would lie and the one where its last byte would: only if some position passes
// both are the eight compared one by one. Where nearly every position passes (periodic data) the
// looks are wasted, so a stretch of positions is compared plainly before the next look.
#include "KOVASMgrSearch.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>

namespace {

constexpr int kWord = static_cast<int>(sizeof(uint64_t));
constexpr int kDense = kWord / 2;         // failed comparisons in a word that make the look a waste
constexpr int kPlainStretch = 32 * kWord; // positions compared plainly after a wasted look

constexpr uint64_t kOnes = 0x0101010101010101;
constexpr uint64_t kHighBits = 0x80 * kOnes;
constexpr char kCaseBit = 0x20; // in which a capital and its small letter differ

uint64_t LoadWord(const char* bytes) {
    uint64_t word = 0;
    std::memcpy(&word, bytes, sizeof word);
    return word;
}

bool HasZeroByte(uint64_t word) { return ((word - kOnes) & ~word & kHighBits) != 0; }

// A rule has the bits in which eight bytes may differ from a pattern's and match all the same, and
// the plain comparison that follows from them.
struct Exact {
    static constexpr uint64_t FreeBits(uint64_t) { return 0; }
    static bool Match(const char* s, const char* pattern, int n) {
        return std::memcmp(s, pattern, static_cast<std::size_t>(n)) == 0;
    }
};

struct Folded {
    static constexpr bool Folds(char pattern) {
        return (pattern >= 'B' && pattern <= 'Y') || (pattern >= 'b' && pattern <= 'y');
    }
    static constexpr uint64_t FreeBits(uint64_t pattern) {
        // The sums set a byte's high bit from 'b' on and from 'z' on; no carry leaves a byte.
        const uint64_t small = (pattern | kCaseBit * kOnes) & ~kHighBits;
        const uint64_t fromB = small + (0x80 - 'b') * kOnes;
        const uint64_t fromZ = small + (0x80 - 'z') * kOnes;
        return ((fromB & ~fromZ & ~pattern & kHighBits) >> 7) * kCaseBit;
    }
    static bool Match(const char* s, const char* pattern, int n) {
        return MatchFirstWord(s, pattern, n) && MatchBehindFirstWord(s, pattern, n);
    }
    static bool MatchFirstWord(const char* s, const char* pattern, int n) {
        for (int i = 0; i < std::min(n, kWord); ++i) {
            const int difference = s[i] ^ pattern[i];
            if (difference != 0 && !(difference == kCaseBit && Folds(pattern[i]))) {
                return false;
            }
        }
        return true;
    }
    // Not inlined: rarely reached, and its registers would burden every comparison.
    [[gnu::noinline]] static bool MatchBehindFirstWord(const char* s, const char* pattern, int n) {
        for (std::ptrdiff_t next = kWord; next < n; next += kWord) {
            const auto i = std::min<std::ptrdiff_t>(next, n - kWord); // the last two may overlap
            const uint64_t word = LoadWord(pattern + i);
            const uint64_t differences = LoadWord(s + i) ^ word;
            if (differences != 0 && (differences & ~FreeBits(word)) != 0) {
                return false;
            }
        }
        return true;
    }
};

// Eight bytes of a pattern, or one byte eight times.
template <typename Rule> class PatternWord {
  public:
    explicit PatternWord(uint64_t word) : m_Word(word), m_Fixed(~Rule::FreeBits(word)) {}

    // The first eight bytes; behind a shorter pattern anything matches.
    PatternWord(const char* pattern, int length) : PatternWord(0) {
        if (length >= kWord) {
            *this = PatternWord(LoadWord(pattern));
            return;
        }
        uint64_t used = 0;
        std::memset(&used, 0xff, static_cast<std::size_t>(length));
        std::memcpy(&m_Word, pattern, static_cast<std::size_t>(length));
        m_Fixed = ~Rule::FreeBits(m_Word) & used;
    }

    // A byte of the result is zero where the byte matches.
    uint64_t Differences(uint64_t word) const { return (word ^ m_Word) & m_Fixed; }

  private:
    uint64_t m_Word;
    uint64_t m_Fixed;
};

template <typename Rule> PatternWord<Rule> Repeated(char byte) {
    return PatternWord<Rule>(static_cast<unsigned char>(byte) * kOnes);
}

// Compares the whole needle with a few places.
template <typename Rule> class PlainComparison {
  public:
    PlainComparison(const char* needle, int needleLen) : m_Needle(needle), m_Len(needleLen) {}

    bool operator()(const char* s) const { return Rule::Match(s, m_Needle, m_Len); }

  private:
    const char* m_Needle;
    int m_Len;
};

// Compares the whole needle with many places of one haystack, eight bytes at a time.
template <typename Rule> class Comparison {
  public:
    Comparison(const char* needle, int needleLen, const char* hayEnd)
        : m_Needle(needle), m_Len(needleLen), m_HayEnd(hayEnd), m_Head(needle, needleLen) {}

    bool operator()(const char* s) const {
        if (m_HayEnd - s < kWord) {
            return Rule::Match(s, m_Needle, m_Len);
        }
        return m_Head.Differences(LoadWord(s)) == 0 &&
               Rule::MatchBehindFirstWord(s, m_Needle, m_Len);
    }

  private:
    const char* m_Needle;
    int m_Len;
    const char* m_HayEnd;
    PatternWord<Rule> m_Head;
};

// Nothing beats the library here.
template <> class Comparison<Exact> : public PlainComparison<Exact> {
  public:
    Comparison(const char* needle, int needleLen, const char*)
        : PlainComparison(needle, needleLen) {}
};

// Tries the start positions from start up to, not including, stop.
template <typename Matches>
const char* TryAll(const char* start, const char* stop, const Matches& matches) {
    for (; start != stop; ++start) {
        if (matches(start)) {
            return start;
        }
    }
    return nullptr;
}

// Finds the next eight start positions of which at least one passes by its needle's first and last
// byte; less than eight before stop when there are none.
template <typename Rule> class Look {
  public:
    Look(const char* needle, int needleLen)
        : m_First(Repeated<Rule>(needle[0])), m_Last(Repeated<Rule>(needle[needleLen - 1])),
          m_ToLast(needleLen - 1) {}

    const char* NextLikely(const char* start, const char* stop) const {
        while (stop - start >= kWord &&
               !HasZeroByte(m_First.Differences(LoadWord(start)) |
                            m_Last.Differences(LoadWord(start + m_ToLast)))) {
            start += kWord;
        }
        return start;
    }

    bool FirstMatches(const char* start) const {
        return (m_First.Differences(static_cast<unsigned char>(*start)) & 0xff) == 0;
    }

  private:
    PatternWord<Rule> m_First;
    PatternWord<Rule> m_Last;
    std::ptrdiff_t m_ToLast;
};

// The same as TryAll, by looking at eight positions at a time. Not inlined, so that a search of few
// positions does not pay for its registers.
template <typename Rule>
[[gnu::noinline]] const char* TryLikely(const char* start, const char* stop, const char* needle,
                                        int needleLen) {
    const Look<Rule> look(needle, needleLen);
    start = look.NextLikely(start, stop);
    if (stop - start < kWord) {
        return TryAll(start, stop, PlainComparison<Rule>(needle, needleLen));
    }
    const Comparison<Rule> matches(needle, needleLen, stop + needleLen - 1);
    while (stop - start >= kWord) {
        int failed = 0;
        for (const char* const next = start + kWord; start != next; ++start) {
            if (look.FirstMatches(start)) {
                if (matches(start)) {
                    return start;
                }
                ++failed;
            }
        }
        if (failed >= kDense) {
            const auto stretch = std::min<std::ptrdiff_t>(stop - start, kPlainStretch);
            if (const char* found = TryAll(start, start + stretch, matches)) {
                return found;
            }
            start += stretch;
        }
        start = look.NextLikely(start, stop);
    }
    return TryAll(start, stop, matches);
}

template <typename Rule>
const char* Search(const char* hay, int hayLen, const char* needle, int needleLen) {
    if (hay == nullptr || needle == nullptr || hayLen < 1 || needleLen < 1 || hayLen < needleLen) {
        return nullptr;
    }
    const char* const stop = hay + (hayLen - needleLen) + 1; // behind the last start position
    if (stop - hay >= kWord) {
        return TryLikely<Rule>(hay, stop, needle, needleLen);
    }
    return TryAll(hay, stop, PlainComparison<Rule>(needle, needleLen));
}

} // namespace

const char* memcasecmp(const char* s, const char* pattern, int n) {
    if (s == nullptr || pattern == nullptr || n < 1 || !Folded::Match(s, pattern, n)) {
        return nullptr;
    }
    return s;
}

const char* SubCaseMem(const char* hay, int hayLen, const char* needle, int needleLen) {
    return Search<Folded>(hay, hayLen, needle, needleLen);
}

const char* SubMem(const char* hay, int hayLen, const char* needle, int needleLen) {
    return Search<Exact>(hay, hayLen, needle, needleLen);
}
