// SPDX-License-Identifier: MIT
//
// The small parts of a simulation, each alone.
#include <gtest/gtest.h>

#include <chrono>
#include <string>

#include "adapters/virtual/language/action_text.h"
#include "adapters/virtual/language/event_reader.h"
#include "adapters/virtual/simulation/byte_matcher.h"
#include "adapters/virtual/simulation/fault_queue.h"
#include "adapters/virtual/simulation/pace.h"
#include "adapters/virtual/simulation/random_bytes.h"

using std::chrono::milliseconds;
using std::chrono::seconds;

namespace {

// The numbers of the texts that are found.
std::string Found(ByteMatcher& matcher, const std::string& bytes) {
    std::string text;
    for (const char byte : bytes) {
        if (const auto number = matcher.Take(byte)) {
            text += std::to_string(*number) + " ";
        }
    }
    return text;
}

Action Fault(ActionKind kind, size_t calls, milliseconds time = {}) {
    Action action;
    action.kind = kind;
    action.extent = {calls, time};
    action.count = 3;
    action.delay = seconds(1);
    return action;
}

} // namespace

TEST(ByteMatcher, TheFirstTextThatWasAddedWins) {
    ByteMatcher matcher;
    matcher.Add("ab", 0);
    matcher.Add("b", 1);
    matcher.Add("cb", 2);
    EXPECT_EQ("0 1 1 ", Found(matcher, "ab") + Found(matcher, "cb") + Found(matcher, "b"));
}

TEST(ByteMatcher, WhatWasFoundDoesNotCountAgain) {
    ByteMatcher matcher;
    matcher.Add("aa", 7);
    EXPECT_EQ("7 ", Found(matcher, "aaa"));
    EXPECT_EQ("7 ", Found(matcher, "a"));
}

TEST(ByteMatcher, ATextIsFoundAfterAnyOther) {
    ByteMatcher matcher;
    matcher.Add(std::string("\0\xff\r", 3), 1);
    EXPECT_EQ("1 ", Found(matcher, std::string(10000, '\0') + "\xff\r"));
    Found(matcher, std::string("\0\xff", 2));
    matcher.Restart();
    EXPECT_EQ("", Found(matcher, "\r"));
}

TEST(FaultQueue, AFaultLastsForItsCalls) {
    FaultQueue queue;
    queue.Arm(Fault(ActionKind::Fail, 2), seconds(0), 1);
    EXPECT_TRUE(queue.Take(seconds(5)).fails);
    EXPECT_TRUE(queue.Take(seconds(5)).fails);
    EXPECT_FALSE(queue.Take(seconds(5)).IsAny());
    EXPECT_TRUE(queue.IsEmpty());
}

TEST(FaultQueue, AFaultLastsForItsTimeOrAlways) {
    FaultQueue queue;
    queue.Arm(Fault(ActionKind::Fail, 0, milliseconds(100)), seconds(1), 1);
    EXPECT_TRUE(queue.Take(milliseconds(1099)).fails);
    EXPECT_FALSE(queue.Take(milliseconds(1100)).fails);
    queue.Arm(Fault(ActionKind::Fail, 0), seconds(0), 1);
    EXPECT_TRUE(queue.Take(std::chrono::hours(10000)).fails);
    queue.Clear();
    EXPECT_FALSE(queue.Take(seconds(0)).fails);
}

TEST(FaultQueue, ADelayGoesTogetherWithOneOfTheOthers) {
    FaultQueue queue;
    queue.Arm(Fault(ActionKind::Shorten, 1), seconds(0), 1);
    queue.Arm(Fault(ActionKind::Delay, 2), seconds(0), 2);
    queue.Arm(Fault(ActionKind::Fail, 1), seconds(0), 3);
    const Faults first = queue.Take(seconds(0));
    EXPECT_TRUE(first.fails && first.delay == seconds(1) && !first.limit);
    const Faults second = queue.Take(seconds(0));
    EXPECT_TRUE(!second.fails && second.delay == seconds(1) && second.limit == 3U);
}

TEST(FaultQueue, FaultsOfOneSourceReplaceAndOfSeveralAddUp) {
    FaultQueue queue;
    queue.Arm(Fault(ActionKind::Fail, 1), seconds(0), 1);
    queue.Arm(Fault(ActionKind::Fail, 1), seconds(0), 1);
    queue.Arm(Fault(ActionKind::Fail, 1), seconds(0), 2);
    EXPECT_TRUE(queue.Take(seconds(0)).fails);
    EXPECT_TRUE(queue.Take(seconds(0)).fails);
    EXPECT_FALSE(queue.Take(seconds(0)).fails);
}

TEST(RandomBytes, AreTheSameForTheSameSeedAndPurpose) {
    RandomBytes one(1, "p1");
    RandomBytes same(1, "p1");
    const std::string bytes = one.Next(100);
    const std::string start = same.Next(30);
    EXPECT_EQ(bytes, start + same.Next(70));
    EXPECT_NE(bytes, RandomBytes(2, "p1").Next(100));
    EXPECT_NE(bytes, RandomBytes(1, "p2").Next(100));
    EXPECT_NE(bytes, one.Next(100));
}

TEST(RandomBytes, AreTheSameOnEveryMachine) { EXPECT_EQ("e~\x88;", RandomBytes(1, "p1").Next(4)); }

TEST(DeparturePace, BytesLeaveOneAfterTheOther) {
    DeparturePace pace(ByteTime(10000)); // a byte a millisecond
    EXPECT_EQ(DeparturePace::kRoom, pace.Room(seconds(0)));
    pace.Put(100, seconds(1));
    EXPECT_EQ(milliseconds(1100), pace.Arrival(seconds(1), 0));
    EXPECT_EQ(milliseconds(1001), pace.Arrival(seconds(1), 99));
    EXPECT_EQ(seconds(5), pace.Arrival(seconds(5), 0));
    EXPECT_EQ(DeparturePace::kRoom - 50, pace.Room(milliseconds(1050)));
    pace.Put(DeparturePace::kRoom - 100, seconds(1));
    EXPECT_EQ(0U, pace.Room(seconds(1)));
    EXPECT_EQ(milliseconds(1010), pace.WhenRoomFor(10));
    EXPECT_EQ(10U, pace.Room(milliseconds(1010)));
    pace.Restart();
    EXPECT_EQ(DeparturePace::kRoom, pace.Room(seconds(1)));
}

TEST(ArrivalPace, NoMoreArrivesThanTheLineCarries) {
    ArrivalPace pace(ByteTime(10000));
    pace.Restart(seconds(1));
    EXPECT_EQ(0U, pace.Arrived(seconds(1)));
    EXPECT_EQ(20U, pace.Arrived(milliseconds(1020)));
    pace.Took(20, false, milliseconds(1020));
    EXPECT_EQ(5U, pace.Arrived(milliseconds(1025)));
    pace.Took(2, true, milliseconds(1025)); // there were no more
    EXPECT_EQ(0U, pace.Arrived(milliseconds(1025)));
}

TEST(ByteTimeOf, ABaudRateIsTenBitsAByte) {
    EXPECT_EQ(std::chrono::nanoseconds(1041666), ByteTime(9600));
    EXPECT_EQ(std::chrono::nanoseconds(86805), ByteTime(115200));
}

TEST(ActionText, IsTheScenariosOwnWord) {
    for (const char* const text :
         {"pull modem", "switch modem update", "unplug-port \"p 1\"", "send \"OK\\r\\n\" to p1",
          "send \"x\" to p1 3 times", "send 17 random bytes to p1", "stall p1", "fail write to p1",
          "fail open of p1 2 times", "fail enumeration always",
          "delay read from p1 by 20ms for 1500us", "shorten write to p1 to 2 bytes for 3s"}) {
        EXPECT_EQ(text, ActionText(ReadAction(text)));
    }
}
