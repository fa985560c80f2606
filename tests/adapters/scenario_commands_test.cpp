// SPDX-License-Identifier: MIT
//
// What a running scenario does when it is told to.
#include <chrono>
#include <string>

#include "tests/adapters/simulated_host.h"
#include "tests/harness/wait_until.h"

namespace {

class ScenarioCommand : public SimulatedHost {};

} // namespace

TEST_F(ScenarioCommand, StatusTellsTimeSpeedSeedAndState) {
    Run("", kTwoPorts, "seed = 7\nspeed = 2.5\nend = '1ms'");
    ASSERT_TRUE(WaitForEnd());
    EXPECT_EQ("2.5", Status("speed"));
    EXPECT_EQ("7", Status("seed"));
    EXPECT_GT(std::stod(Status("time")), 0.0);
}

TEST_F(ScenarioCommand, AScenarioWithoutAnEndRuns) {
    Run("");
    EXPECT_EQ("running", Status("state"));
}

TEST_F(ScenarioCommand, APausedScenarioStandsStillUntilItGoesOn) {
    Run("'at 1s pull modem'", kTwoPorts, "speed = 10");
    ASSERT_EQ("ok", Command("pause"));
    const std::string time = Status("time");
    EXPECT_EQ("paused", Status("state"));
    const int handle = Open("p1"); // the host goes on
    EXPECT_EQ(1, m_Adapter.WriteText(handle, "x"));
    EXPECT_EQ(time, Status("time"));
    ASSERT_EQ("ok", Command("continue"));
    EXPECT_TRUE(WaitUntil([&] { return m_Adapter.DevicesText().empty(); }));
    EXPECT_EQ("pause\ncontinue\n", Track("commands"));
}

TEST_F(ScenarioCommand, BytesAreSentHoweverTheyAreQuoted) {
    Run("");
    const int handle = Open("p1");
    ASSERT_EQ("ok", Command("send \"a b\\r\" to p1 2 times"));
    EXPECT_EQ("a b\ra b\r", m_Adapter.ReadUntil(handle, "a b\ra b\r"));
    ASSERT_EQ("ok", Command("send AT\\r to p1"));
    EXPECT_EQ("AT\r", m_Adapter.ReadUntil(handle, "AT\r"));
}

TEST_F(ScenarioCommand, RandomBytesByHandDoNotChangeThoseOfTheScenario) {
    std::string texts[2];
    for (std::string& text : texts) {
        Run("'at 500ms send 32 random bytes to p1'");
        const int handle = Open("p1");
        if (&text == texts) {
            ASSERT_EQ("ok", Command("send 8 random bytes to p1"));
            std::string byHand;
            ASSERT_TRUE(
                WaitUntil([&] { return (byHand += m_Adapter.ReadText(handle)).size() >= 8; }));
        }
        ASSERT_TRUE(WaitUntil([&] { return (text += m_Adapter.ReadText(handle)).size() >= 32; },
                              std::chrono::seconds(60)));
        End();
    }
    EXPECT_EQ(texts[0], texts[1]);
}

TEST_F(ScenarioCommand, WhatCannotBeDoneIsRefusedWithAReason) {
    Run("");
    EXPECT_EQ("error no port 'p9'", Command("stall p9"));
    EXPECT_EQ("error no port 'p9'", Command("fail write to p9"));
    EXPECT_EQ("error no port 'modem'", Command("send \"x\" to modem"));
    EXPECT_EQ(0U, Command("fail something").find("error "));
    EXPECT_EQ(0U, Command("reply \"x\"").find("error "));
    EXPECT_EQ("error usage: pause", Command("pause now"));
    EXPECT_EQ("ok", Command("stall p1"));
}

TEST_F(ScenarioCommand, ListShowsWhatIsWrongWithAPort) {
    Run("'at 0s break p1', 'at 0s stall p2'");
    const std::string list = Command("list");
    EXPECT_NE(std::string::npos, list.find("closed broken\n"));
    EXPECT_NE(std::string::npos, list.find("closed stalled\n"));
}
