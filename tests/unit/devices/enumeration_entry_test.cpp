// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>

#include <climits>

#include "devices/enumeration_entry.h"

TEST(EnumeratedText, EndsAtItsTerminator) {
    char text[8] = "abc";
    text[5] = 'x';
    EXPECT_EQ(BoundedText(text), "abc");
    EXPECT_TRUE(BoundedEquals(text, "abc"));
    EXPECT_FALSE(BoundedEquals(text, "ab"));
    EXPECT_FALSE(BoundedEquals(text, "abcx"));
    EXPECT_FALSE(BoundedEquals(text, "abC"));
}

TEST(EnumeratedText, FilledWithoutATerminatorEndsOneByteBeforeItsArray) {
    const char text[4] = {'a', 'b', 'c', 'd'};
    EXPECT_EQ(BoundedText(text), "abc");
    EXPECT_TRUE(BoundedEquals(text, "abc"));
    EXPECT_FALSE(BoundedEquals(text, "abcd"));
}

TEST(EnumeratedText, MayBeEmpty) {
    const char text[4] = {};
    EXPECT_EQ(BoundedText(text), "");
    EXPECT_TRUE(BoundedEquals(text, ""));
    EXPECT_FALSE(BoundedEquals(text, "a"));
}

TEST(EnumeratedCount, OfDevicesLiesBetweenNoneAnd64) {
    _OS_ADAPT_DEVICEPORTLIST list = {};
    const std::pair<int, int> cases[] = {{INT_MIN, 0}, {-1, 0},  {0, 0},       {1, 1},
                                         {64, 64},     {65, 64}, {INT_MAX, 64}};
    for (const auto& [reported, used] : cases) {
        list.nDeviceCount = reported;
        EXPECT_EQ(BoundedDeviceCount(list), used) << reported;
    }
}

TEST(EnumeratedCount, OfPortsLiesBetweenNoneAnd16) {
    _OS_ADAPT_DEVICEPORTINFO device = {};
    const std::pair<int, int> cases[] = {{INT_MIN, 0}, {-1, 0},  {0, 0},       {1, 1},
                                         {16, 16},     {17, 16}, {INT_MAX, 16}};
    for (const auto& [reported, used] : cases) {
        device.nPortCount = reported;
        EXPECT_EQ(BoundedPortCount(device), used) << reported;
    }
}
