// SPDX-License-Identifier: MIT
//
// The searches against the plainest possible ones, on many texts of few and of many different
// bytes, with forbidden memory right behind and right before what they may read.
#include "KOVASMgrSearch.h"

#include <gtest/gtest.h>

#include <random>
#include <string>

#include "tests/unit/support/guarded_pages.h"

namespace {

bool BytesMatch(char s, char pattern) {
    if (pattern >= 'B' && pattern <= 'Y') {
        return s == pattern || s == pattern + 32;
    }
    if (pattern >= 'b' && pattern <= 'y') {
        return s == pattern || s == pattern - 32;
    }
    return s == pattern;
}

bool MatchesAt(const std::string& hay, std::size_t at, const std::string& needle, bool folds) {
    for (std::size_t i = 0; i < needle.size(); ++i) {
        const bool matches = folds ? BytesMatch(hay[at + i], needle[i]) : hay[at + i] == needle[i];
        if (!matches) {
            return false;
        }
    }
    return true;
}

long PlainFind(const std::string& hay, const std::string& needle, bool folds) {
    if (needle.empty()) {
        return -1;
    }
    for (std::size_t at = 0; at + needle.size() <= hay.size(); ++at) {
        if (MatchesAt(hay, at, needle, folds)) {
            return static_cast<long>(at);
        }
    }
    return -1;
}

class Texts {
  public:
    std::size_t Upto(std::size_t bound) {
        return std::uniform_int_distribution<std::size_t>(0, bound)(m_Random);
    }

    std::string Of(const std::string& alphabet, std::size_t length) {
        std::string text;
        while (text.size() < length) {
            text += alphabet[Upto(alphabet.size() - 1)];
        }
        return text;
    }

    // Mostly a part of the haystack, now and then with one byte changed.
    std::string NeedleFor(const std::string& hay, const std::string& alphabet) {
        const std::size_t at = Upto(hay.size());
        std::string needle = hay.substr(at, Upto(std::min<std::size_t>(40, hay.size() - at)));
        if (!needle.empty() && Upto(1) == 0) {
            needle[Upto(needle.size() - 1)] = alphabet[Upto(alphabet.size() - 1)];
        }
        return needle;
    }

  private:
    std::mt19937 m_Random{20260131};
};

std::string AllBytes() {
    std::string all;
    for (int byte = 0; byte < 256; ++byte) {
        all += static_cast<char>(byte);
    }
    return all;
}

struct Alphabet {
    const char* name;
    std::string bytes;
};

class RandomTexts : public testing::TestWithParam<Alphabet> {
  protected:
    void Compare(const char* hay, const std::string& hayText, const char* needle,
                 const std::string& needleText) {
        const int hayLen = static_cast<int>(hayText.size());
        const int needleLen = static_cast<int>(needleText.size());
        const char* const exact = SubMem(hay, hayLen, needle, needleLen);
        const char* const folded = SubCaseMem(hay, hayLen, needle, needleLen);
        ASSERT_EQ(exact == nullptr ? -1 : exact - hay, PlainFind(hayText, needleText, false))
            << "hay " << testing::PrintToString(hayText) << " needle "
            << testing::PrintToString(needleText);
        ASSERT_EQ(folded == nullptr ? -1 : folded - hay, PlainFind(hayText, needleText, true))
            << "hay " << testing::PrintToString(hayText) << " needle "
            << testing::PrintToString(needleText);
    }
};

TEST_P(RandomTexts, AreSearchedLikeThePlainLoopAndNothingElseIsRead) {
    Texts texts;
    GuardedPages hayPages;
    GuardedPages needlePages;
    for (int round = 0; round < 20000; ++round) {
        const std::string hay = texts.Of(GetParam().bytes, texts.Upto(300));
        const std::string needle = texts.NeedleFor(hay, GetParam().bytes);
        Compare(hayPages.AtEnd(hay), hay, needlePages.AtEnd(needle), needle);
        Compare(hayPages.AtStart(hay), hay, needlePages.AtStart(needle), needle);
    }
}

INSTANTIATE_TEST_SUITE_P(
    ByteSearch, RandomTexts,
    testing::Values(Alphabet{"OneLetter", "q"}, Alphabet{"OuterLetter", "aA"},
                    Alphabet{"InnerLetter", "bB"}, Alphabet{"ZeroBytes", std::string("b\0", 2)},
                    Alphabet{"TwoLetters", "bBcC"}, Alphabet{"OuterAndInnerLetters", "aAbByYzZ"},
                    Alphabet{"NeighboursOfLetters", "@AZ[`az{"},
                    Alphabet{"BytesAbove127", "\xc2\xe2"
                                              "bB"},
                    Alphabet{"AllBytes", AllBytes()}),
    [](const testing::TestParamInfo<Alphabet>& each) { return each.param.name; });

TEST(MemcasecmpAtPageEnds, NothingElseIsRead) {
    GuardedPages pages;
    GuardedPages patternPages;
    for (std::size_t length = 1; length <= 300; ++length) {
        const std::string text(length, 'M');
        const std::string pattern(length, 'm');
        const char* const s = pages.AtEnd(text);
        EXPECT_EQ(memcasecmp(s, patternPages.AtEnd(pattern), static_cast<int>(length)), s);
    }
}

} // namespace
