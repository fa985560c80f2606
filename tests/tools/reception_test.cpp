// SPDX-License-Identifier: MIT
#include "tools/kovasctl/reception.h"

#include <gtest/gtest.h>

#include <initializer_list>

namespace {

std::string AcceptAll(Reception& reception, std::initializer_list<const char*> pieces) {
    std::string accepted;
    for (const char* piece : pieces) {
        std::string bytes = piece;
        reception.Accept(bytes);
        accepted += bytes;
    }
    return accepted;
}

TEST(Reception, EndsBehindATextThatArrivesInPieces) {
    Reception reception({}, "abcabd");
    EXPECT_EQ("xabcabc", AcceptAll(reception, {"xabc", "ab", "c"}));
    EXPECT_FALSE(reception.IsComplete());
    EXPECT_EQ("abd", AcceptAll(reception, {"a", "bdy"}));
    EXPECT_TRUE(reception.IsComplete());
    EXPECT_EQ(10U, reception.Received());
}

TEST(Reception, EndsBehindASingleCharacter) {
    Reception reception({}, "!");
    EXPECT_EQ("ab!", AcceptAll(reception, {"a", "b!c"}));
    EXPECT_TRUE(reception.IsComplete());
}

TEST(Reception, EndsAfterTheCount) {
    Reception reception(5, "");
    EXPECT_EQ("abcde", AcceptAll(reception, {"abc", "def"}));
    EXPECT_TRUE(reception.IsComplete());
}

TEST(Reception, EndsAtWhatIsFirst) {
    Reception text(5, "b");
    EXPECT_EQ("ab", AcceptAll(text, {"abcdef"}));
    Reception count(1, "b");
    EXPECT_EQ("a", AcceptAll(count, {"abcdef"}));
    EXPECT_TRUE(text.IsComplete() && count.IsComplete());
}

TEST(Reception, WithoutAnEndTakesEverything) {
    Reception reception({}, "");
    EXPECT_EQ("abc", AcceptAll(reception, {"a", "bc"}));
    EXPECT_FALSE(reception.HasEnd() || reception.IsComplete());
}

} // namespace
