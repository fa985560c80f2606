// SPDX-License-Identifier: MIT
#include "KOVASMgrSearch.h"

#include <gtest/gtest.h>

#include <climits>
#include <string>

namespace {

using Search = const char* (*)(const char*, int, const char*, int);

// The offset of the match, or -1.
long Find(Search search, const std::string& hay, const std::string& needle) {
    const char* const found = search(hay.data(), static_cast<int>(hay.size()), needle.data(),
                                     static_cast<int>(needle.size()));
    return found == nullptr ? -1 : found - hay.data();
}

bool Equal(const std::string& s, const std::string& pattern) {
    return memcasecmp(s.data(), pattern.data(), static_cast<int>(pattern.size())) == s.data();
}

// What holds for the exact search and the one that folds.
class BothSearches : public testing::TestWithParam<Search> {};

TEST_P(BothSearches, AnEmptyNeedleIsNowhere) { EXPECT_EQ(GetParam()("hay", 3, "x", 0), nullptr); }

TEST_P(BothSearches, AnEmptyHaystackHoldsNothing) {
    EXPECT_EQ(GetParam()("hay", 0, "h", 1), nullptr);
    EXPECT_EQ(GetParam()("hay", 0, "h", 0), nullptr);
}

TEST_P(BothSearches, NegativeLengthsFindNothing) {
    EXPECT_EQ(GetParam()("hay", -1, "h", 1), nullptr);
    EXPECT_EQ(GetParam()("hay", 3, "h", -1), nullptr);
    EXPECT_EQ(GetParam()("hay", -1, "h", -1), nullptr);
    EXPECT_EQ(GetParam()("hay", INT_MIN, "h", INT_MIN), nullptr);
}

TEST_P(BothSearches, NullPointersFindNothing) {
    EXPECT_EQ(GetParam()(nullptr, 3, "h", 1), nullptr);
    EXPECT_EQ(GetParam()("hay", 3, nullptr, 1), nullptr);
    EXPECT_EQ(GetParam()(nullptr, 3, nullptr, 3), nullptr);
}

TEST_P(BothSearches, ANeedleLongerThanTheHaystackIsNowhere) {
    EXPECT_EQ(Find(GetParam(), "hay", "hays"), -1);
    EXPECT_EQ(GetParam()("hay", 3, "h", INT_MAX), nullptr);
}

TEST_P(BothSearches, EqualLengthsMatchOnlyAtTheStart) {
    EXPECT_EQ(Find(GetParam(), "hay", "hay"), 0);
    EXPECT_EQ(Find(GetParam(), "hay", "ayh"), -1);
    EXPECT_EQ(Find(GetParam(), "x", "x"), 0);
    EXPECT_EQ(Find(GetParam(), "twenty-four characters ..", "twenty-four characters ..."), -1);
}

TEST_P(BothSearches, AMatchThatEndsAtTheLastByteIsFound) {
    EXPECT_EQ(Find(GetParam(), "hay and needle", "needle"), 8);
    EXPECT_EQ(Find(GetParam(), std::string(100, 'm') + "n", "n"), 100);
    EXPECT_EQ(Find(GetParam(), std::string(100, 'm') + "n", "mmmn"), 97);
}

TEST_P(BothSearches, TheLeftmostOfSeveralMatchesIsFound) {
    EXPECT_EQ(Find(GetParam(), "..1212..", "12"), 2);
    EXPECT_EQ(Find(GetParam(), "1111", "11"), 0);
    EXPECT_EQ(Find(GetParam(), std::string(40, '.') + "12 12", "12"), 40);
}

TEST_P(BothSearches, ZeroBytesAreOrdinaryBytes) {
    const std::string hay("one\0two\0\0three", 14);
    EXPECT_EQ(Find(GetParam(), hay, std::string("\0\0", 2)), 7);
    EXPECT_EQ(Find(GetParam(), hay, std::string("o\0", 2)), 6);
    EXPECT_EQ(Find(GetParam(), hay, "three"), 9);
    EXPECT_EQ(Find(GetParam(), std::string(64, '\0'), std::string(65, '\0')), -1);
    EXPECT_EQ(Find(GetParam(), std::string(64, '\0') + '\1', std::string("\0\1", 2)), 63);
}

TEST_P(BothSearches, ANeedleBehindALongPeriodicStretchIsFound) {
    const std::string stretch(5000, 'q');
    for (int length = 2; length <= 64; ++length) {
        const std::string needle = std::string(static_cast<std::size_t>(length) - 1, 'q') + '!';
        EXPECT_EQ(Find(GetParam(), stretch + '!', needle), 5001 - length);
        EXPECT_EQ(Find(GetParam(), stretch, needle), -1);
    }
}

INSTANTIATE_TEST_SUITE_P(ByteSearch, BothSearches, testing::Values(&SubMem, &SubCaseMem),
                         [](const testing::TestParamInfo<Search>& each) {
                             return each.param == &SubMem ? "Exact" : "Folded";
                         });

TEST(SubMem, DistinguishesCase) {
    EXPECT_EQ(Find(SubMem, "Modem modem MODEM", "modem"), 6);
    EXPECT_EQ(Find(SubMem, "Modem", "MODEM"), -1);
}

TEST(SubCaseMem, CapitalANeverFoldsButCapitalTDoes) {
    EXPECT_EQ(Find(SubCaseMem, "..At", "AT"), 2);
    EXPECT_EQ(Find(SubCaseMem, "..AT", "AT"), 2);
    EXPECT_EQ(Find(SubCaseMem, "..at", "AT"), -1);
    EXPECT_EQ(Find(SubCaseMem, "..aT", "AT"), -1);
}

TEST(SubCaseMem, SmallANeverFoldsButSmallTDoes) {
    EXPECT_EQ(Find(SubCaseMem, "..at", "at"), 2);
    EXPECT_EQ(Find(SubCaseMem, "..aT", "at"), 2);
    EXPECT_EQ(Find(SubCaseMem, "..AT", "at"), -1);
    EXPECT_EQ(Find(SubCaseMem, "..At", "at"), -1);
}

TEST(SubCaseMem, FoldsAcrossWholeWords) {
    EXPECT_EQ(Find(SubCaseMem, "........DeviCeTreeOFPoRtS", "devicetreeofports"), 8);
    EXPECT_EQ(Find(SubCaseMem, "........DeviCeTreeOFPoRtZ", "devicetreeofportz"), -1);
}

TEST(Memcasecmp, GivesItsFirstArgument) {
    const std::string s = "MODEM";
    EXPECT_EQ(memcasecmp(s.data(), "modem", 5), s.data());
}

TEST(Memcasecmp, ComparingNothingIsNoMatch) {
    EXPECT_EQ(memcasecmp("x", "x", 0), nullptr);
    EXPECT_EQ(memcasecmp("x", "x", -1), nullptr);
}

TEST(Memcasecmp, NullPointersAreNoMatch) {
    EXPECT_EQ(memcasecmp(nullptr, "x", 1), nullptr);
    EXPECT_EQ(memcasecmp("x", nullptr, 1), nullptr);
    EXPECT_EQ(memcasecmp(nullptr, nullptr, 1), nullptr);
}

TEST(Memcasecmp, LooksAtTheFirstBytesOnly) {
    EXPECT_TRUE(memcasecmp("port7", "PORT8", 4) != nullptr);
    EXPECT_TRUE(memcasecmp("port7", "PORT8", 5) == nullptr);
}

TEST(Memcasecmp, OuterLettersAreComparedExactly) {
    EXPECT_TRUE(Equal("aBC", "abc"));
    EXPECT_FALSE(Equal("Abc", "abc"));
    EXPECT_FALSE(Equal("abc", "Abc"));
    EXPECT_FALSE(Equal("z", "Z"));
    EXPECT_FALSE(Equal("Z", "z"));
    EXPECT_TRUE(Equal("yY", "Yy"));
}

// Every pair of bytes against the rule, written out.
TEST(Memcasecmp, ThePatternsByteDecides) {
    for (int p = 0; p < 256; ++p) {
        for (int s = 0; s < 256; ++s) {
            const bool isCapital = p >= 'B' && p <= 'Y';
            const bool isSmall = p >= 'b' && p <= 'y';
            const bool matches = s == p || (isCapital && s == p + 32) || (isSmall && s == p - 32);
            EXPECT_EQ(
                Equal(std::string(1, static_cast<char>(s)), std::string(1, static_cast<char>(p))),
                matches)
                << "pattern " << p << ", byte " << s;
        }
    }
}

} // namespace
