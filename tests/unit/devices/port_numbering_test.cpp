// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>

#include "devices/port_book.h"
#include "tests/unit/devices/port_builders.h"

TEST(PortNumbering, TheFirstPortIsNumberOne) {
    int32_t last = 0;
    EXPECT_EQ(NextPortID({}, last), 1);
    EXPECT_EQ(last, 1);
}

TEST(PortNumbering, NumbersGrowAlsoWhenPortsHaveGone) {
    int32_t last = 5;
    EXPECT_EQ(NextPortID({}, last), 6);
    EXPECT_EQ(NextPortID({}, last), 7);
}

TEST(PortNumbering, ATakenNumberIsSkipped) {
    int32_t last = 0;
    EXPECT_EQ(NextPortID(PortsNumbered({1}), last), 2);
    EXPECT_EQ(last, 2);
}

TEST(PortNumbering, NumbersTakenInAscendingOrderAreAllSkipped) {
    int32_t last = 0;
    EXPECT_EQ(NextPortID(PortsNumbered({1, 2}), last), 3);
    EXPECT_EQ(last, 3);
}

TEST(PortNumbering, NumbersTakenInDescendingOrderAreNotAllSkipped) {
    int32_t last = 0;
    EXPECT_EQ(NextPortID(PortsNumbered({2, 1}), last), 2);
    EXPECT_EQ(last, 2);
}

TEST(PortNumbering, TheListIsWalkedOnceWhateverItsOrder) {
    int32_t last = 0;
    EXPECT_EQ(NextPortID(PortsNumbered({3, 1, 2, 4}), last), 3);
    last = 0;
    EXPECT_EQ(NextPortID(PortsNumbered({7, 1, 9, 2, 8, 3}), last), 4);
}

TEST(PortNumbering, TakenNumbersAboveAndBelowAreNotInTheWay) {
    int32_t last = 10;
    EXPECT_EQ(NextPortID(PortsNumbered({1, 10, 12, 40}), last), 11);
    EXPECT_EQ(NextPortID(PortsNumbered({1, 10, 12, 40}), last), 13);
}

TEST(PortNumbering, ThePortsAreNotTouched) {
    std::vector<_PORT_> ports = PortsNumbered({1, 2});
    int32_t last = 0;
    NextPortID(ports, last);
    EXPECT_EQ(IDs(ports), (std::vector<int32_t>{1, 2}));
}
