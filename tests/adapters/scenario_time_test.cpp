// SPDX-License-Identifier: MIT
//
// A scenario's clock and what it brings, with a real time that stands still.
#include <gtest/gtest.h>

#include <chrono>
#include <string>
#include <vector>

#include "adapters/virtual/simulation/scenario_clock.h"
#include "adapters/virtual/simulation/timeline.h"

using std::chrono::milliseconds;
using std::chrono::seconds;

namespace {

ScenarioClock::Instant s_RealTime{seconds(1000)};

ScenarioClock::Instant RealTime() { return s_RealTime; }

Event At(milliseconds time) {
    Event event;
    event.trigger.kind = TriggerKind::At;
    event.trigger.time = time;
    return event;
}

Event Every(milliseconds period, milliseconds start = {}) {
    Event event = At(period);
    event.trigger.kind = TriggerKind::Every;
    event.trigger.start = start;
    return event;
}

// "time:event " for each that is due.
std::string DueText(Timeline& timeline, milliseconds now) {
    std::string text;
    while (const auto due = timeline.TakeDue(now)) {
        text += std::to_string(due->time.count() / 1000) + ":" + std::to_string(due->event) + " ";
    }
    return text;
}

} // namespace

TEST(ScenarioClock, ItStandsStillUntilItIsSetGoing) {
    ScenarioClock clock(1, RealTime);
    s_RealTime += seconds(5);
    EXPECT_EQ(ScenarioTime(0), clock.Now());
    EXPECT_EQ(std::nullopt, clock.When(seconds(1)));
    EXPECT_TRUE(clock.IsPaused());
}

TEST(ScenarioClock, ItGoesAsFastAsItsSpeedSays) {
    ScenarioClock fast(20, RealTime);
    ScenarioClock slow(0.5, RealTime);
    fast.Continue();
    slow.Continue();
    s_RealTime += seconds(2);
    EXPECT_EQ(seconds(40), fast.Now());
    EXPECT_EQ(seconds(1), slow.Now());
    EXPECT_EQ(s_RealTime + seconds(1), fast.When(seconds(60)));
    EXPECT_EQ(s_RealTime + seconds(2), slow.When(seconds(2)));
}

TEST(ScenarioClock, WhatIsPastIsNow) {
    ScenarioClock clock(1, RealTime);
    clock.Continue();
    s_RealTime += seconds(2);
    EXPECT_EQ(s_RealTime, clock.When(seconds(1)));
}

TEST(ScenarioClock, WhoeverWaitsUntilATimeFindsThatItHasCome) {
    for (const double speed : {0.001, 0.3, 0.7, 1.0, 3.0, 999.9}) {
        ScenarioClock clock(speed, RealTime);
        clock.Continue();
        for (int i = 1; i < 1000; ++i) {
            s_RealTime += std::chrono::nanoseconds(777);
            const ScenarioTime time = clock.Now() + ScenarioTime(i);
            s_RealTime = *clock.When(time);
            ASSERT_GE(clock.Now() + ScenarioTime(1), time) << speed;
        }
    }
}

TEST(ScenarioClock, TimeThatPassesWhileItIsStoppedDoesNotCount) {
    ScenarioClock clock(2, RealTime);
    clock.Continue();
    s_RealTime += seconds(1);
    clock.Pause();
    s_RealTime += seconds(100);
    EXPECT_EQ(seconds(2), clock.Now());
    clock.Continue();
    clock.Continue();
    s_RealTime += seconds(1);
    EXPECT_EQ(seconds(4), clock.Now());
}

TEST(ScenarioClock, AFarTimeIsNoOverflow) {
    ScenarioClock clock(0.001, RealTime);
    clock.Continue();
    EXPECT_GT(*clock.When(std::chrono::hours(24 * 365)), s_RealTime);
}

TEST(Timeline, EventsComeByTimeAndThenByTheirPlace) {
    const std::vector<Event> events = {At(milliseconds(20)), Every(milliseconds(10)),
                                       At(milliseconds(10))};
    Timeline timeline(events, std::nullopt);
    EXPECT_EQ(milliseconds(10), timeline.Next());
    EXPECT_EQ("", DueText(timeline, milliseconds(9)));
    EXPECT_EQ("10:1 10:2 20:0 20:1 ", DueText(timeline, milliseconds(20)));
}

TEST(Timeline, WhatIsLateIsCaughtUpOn) {
    const std::vector<Event> events = {Every(milliseconds(10))};
    Timeline timeline(events, std::nullopt);
    EXPECT_EQ("10:0 20:0 30:0 ", DueText(timeline, milliseconds(35)));
    EXPECT_EQ("40:0 ", DueText(timeline, milliseconds(40)));
}

TEST(Timeline, RepetitionsStartAndEnd) {
    std::vector<Event> events = {Every(milliseconds(10), milliseconds(100))};
    events[0].trigger.end = milliseconds(130);
    Timeline timeline(events, std::nullopt);
    EXPECT_EQ("110:0 120:0 130:0 ", DueText(timeline, seconds(10)));
    EXPECT_EQ(std::nullopt, timeline.Next());
}

TEST(Timeline, NothingIsPlannedBehindTheEnd) {
    const std::vector<Event> events = {Every(milliseconds(10)), At(milliseconds(30)),
                                       At(milliseconds(31))};
    Timeline timeline(events, milliseconds(30));
    EXPECT_EQ("10:0 20:0 30:0 30:1 ", DueText(timeline, seconds(10)));
}

TEST(Timeline, WhatTheHostCausesHasNoTime) {
    std::vector<Event> events(2);
    events[0].trigger.kind = TriggerKind::OnBytes;
    events[1].trigger.kind = TriggerKind::OnCall;
    EXPECT_EQ(std::nullopt, Timeline(events, std::nullopt).Next());
}
