// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>

#include <KOVASMgr.hpp>
#include <array>
#include <cstdint>
#include <string>
#include <vector>

using kovasmgr::ByteView;

TEST(ByteView, OfNothingIsEmpty) {
    EXPECT_TRUE(ByteView().empty());
    EXPECT_TRUE(ByteView(nullptr, 0).empty());
    EXPECT_TRUE(ByteView("").empty());
    EXPECT_EQ("", ByteView().Text());
    EXPECT_EQ(0U, ByteView().Part(3).size());
}

TEST(ByteView, OfATextHasNoTerminator) {
    EXPECT_EQ(3U, ByteView("AT\r").size());
    EXPECT_EQ(2U, ByteView(std::string("AT")).size());
    EXPECT_EQ(2U, ByteView(std::string_view("AT;", 2)).size());
    EXPECT_EQ("AT\r", ByteView("AT\r").Text());
}

TEST(ByteView, OfATextKeepsItsZeroBytes) { EXPECT_EQ(3U, ByteView(std::string("a\0b", 3)).size()); }

TEST(ByteView, OfAContainerShowsItsBytes) {
    const std::vector<std::byte> bytes{std::byte{1}, std::byte{255}};
    const std::array<uint8_t, 3> numbers{1, 2, 3};
    const unsigned char plain[] = {9, 8};
    EXPECT_EQ(bytes.data(), ByteView(bytes).data());
    EXPECT_EQ(std::byte{255}, ByteView(bytes)[1]);
    EXPECT_EQ(3U, ByteView(numbers).size());
    EXPECT_EQ(2U, ByteView(plain).size());
}

TEST(ByteView, OfWiderElementsDoesNotExist) {
    EXPECT_FALSE((std::is_constructible_v<ByteView, std::vector<int>>));
    EXPECT_FALSE((std::is_constructible_v<ByteView, std::vector<std::string>>));
}

TEST(ByteView, IsWalkedFromBeginToEnd) {
    int sum = 0;
    for (const std::byte byte : ByteView("\1\2\3")) {
        sum += std::to_integer<int>(byte);
    }
    EXPECT_EQ(6, sum);
}

TEST(ByteView, GivesPartsThatNeverReachBeyondItsEnd) {
    const ByteView bytes("abcdef");
    EXPECT_EQ("cd", bytes.Part(2, 2).Text());
    EXPECT_EQ("ef", bytes.Part(4, 100).Text());
    EXPECT_EQ("def", bytes.Part(3).Text());
    EXPECT_EQ("", bytes.Part(6).Text());
    EXPECT_EQ("", bytes.Part(100, 1).Text());
}
