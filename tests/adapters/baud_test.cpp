// SPDX-License-Identifier: MIT
//
// Ports with a baud rate: ten bits a byte, by the scenario's clock.
#include <chrono>
#include <string>

#include "adapters/virtual/simulation/line_pace.h"
#include "tests/adapters/far_program.h"
#include "tests/adapters/simulated_host.h"
#include "tests/harness/wait_until.h"

using std::chrono::milliseconds;
using std::chrono::seconds;

namespace {

using Clock = std::chrono::steady_clock;

ScenarioClock::Instant s_RealTime{seconds(1000)};

ScenarioClock::Instant RealTime() { return s_RealTime; }

// A line that carries a byte a millisecond, with a real time that stands still.
class PaceOfALine : public testing::Test {
  protected:
    PaceOfALine() {
        m_Clock.Continue();
        m_Pace.Restart();
    }

    ScenarioClock m_Clock{1, RealTime};
    LinePace m_Pace{10000, m_Clock};
};

class Baud : public SimulatedHost {
  protected:
    // A port with that far end and rate; what its scenario sends is 100 bytes.
    void RunAt(const std::string& far, int baud, const std::string& keys = "") {
        Run("'on \"go\" from p1 reply \"" + std::string(100, 'x') + "\"'",
            "[[device]]\nname = 'd'\n[[device.port]]\nname = 'p1'\nfar = '" + far +
                "'\nbaud = " + std::to_string(baud),
            keys);
    }

    void ReadBytes(int handle, size_t count) const {
        std::string all;
        EXPECT_TRUE(WaitUntil(
            [&] {
                all += m_Adapter.ReadText(handle);
                return all.size() >= count;
            },
            seconds(60)));
    }
};

} // namespace

TEST_F(PaceOfALine, AWriteFillsTheBufferAndFindsRoomByAndBy) {
    EXPECT_EQ(4096U, m_Pace.WriteRoom(10000));
    m_Pace.NoteWritten(4096);
    EXPECT_EQ(0U, m_Pace.WriteRoom(10000));
    EXPECT_FALSE(m_Pace.WaitForRoom(1, Clock::now()));
    s_RealTime += milliseconds(100);
    EXPECT_EQ(100U, m_Pace.WriteRoom(10000));
    EXPECT_TRUE(m_Pace.WaitForRoom(100, Clock::now()));
    EXPECT_EQ(m_Clock.Now() + milliseconds(3996), m_Pace.Arrival(0));
}

TEST_F(PaceOfALine, AReadGivesWhatCanHaveArrived) {
    EXPECT_EQ(0U, m_Pace.ReadRoom(100));
    s_RealTime += milliseconds(30);
    EXPECT_EQ(30U, m_Pace.ReadRoom(100));
    EXPECT_EQ(10U, m_Pace.ReadRoom(10));
    m_Pace.NoteRead(10, true);
    EXPECT_EQ(0U, m_Pace.ReadRoom(100));
}

TEST_F(PaceOfALine, WaitingEndsWithTheSession) {
    m_Pace.NoteWritten(4096);
    m_Pace.EndWaiting();
    EXPECT_FALSE(m_Pace.WaitForRoom(4096, Clock::now() + std::chrono::hours(1)));
}

TEST_F(Baud, BytesToTheHostTakeTheirTime) {
    RunAt("scripted", 2000); // 5 ms a byte
    const auto start = Clock::now();
    const int handle = Open("p1");
    m_Adapter.WriteText(handle, "go");
    ReadBytes(handle, 100);
    EXPECT_GE(Clock::now() - start, milliseconds(500));
}

TEST_F(Baud, TheScenariosSpeedCounts) {
    RunAt("scripted", 20, "speed = 1000"); // 500 ms a byte
    const auto start = Clock::now();
    const int handle = Open("p1");
    m_Adapter.WriteText(handle, "go");
    ReadBytes(handle, 100);
    const auto time = Clock::now() - start;
    EXPECT_GE(time, milliseconds(50));
    EXPECT_LT(time, seconds(40)); // by the real clock it were 50
}

TEST_F(Baud, AnEchoComesAfterTheHostsBytes) {
    RunAt("echo", 2000);
    const auto start = Clock::now();
    const int handle = Open("p1");
    EXPECT_EQ(100, m_Adapter.WriteText(handle, std::string(100, 'x')));
    ReadBytes(handle, 100);
    EXPECT_GE(Clock::now() - start, milliseconds(500));
}

TEST_F(Baud, ALongWriteWaitsForTheLineForASecond) {
    RunAt("silent", 10000); // 1000 bytes a second
    const int handle = Open("p1");
    const auto start = Clock::now();
    const long written = m_Adapter.WriteText(handle, std::string(20000, 'x'));
    EXPECT_GE(Clock::now() - start, seconds(1));
    EXPECT_GE(written, 4096);
    EXPECT_LT(written, 20000);
}

TEST_F(Baud, AnExternalFarEndIsPacedForTheHost) {
    RunAt("external", 2000);
    const auto start = Clock::now();
    const int handle = Open("p1");
    const FarProgram program(PortLink("p1"));
    ASSERT_TRUE(program.Send(std::string(100, 'x')));
    ReadBytes(handle, 100);
    EXPECT_GE(Clock::now() - start, milliseconds(500));
}

TEST_F(Baud, ADeadPortFailsItsReadAllTheSame) {
    RunAt("scripted", 9600);
    const int handle = Open("p1");
    ASSERT_EQ("ok", Command("pull d"));
    EXPECT_TRUE(WaitUntil(
        [&] {
            char buffer[8];
            long count = 0;
            return m_Adapter.Read(handle, buffer, sizeof buffer, &count) == OS_ADAPT_FAILED;
        },
        seconds(60)));
    EXPECT_EQ("", m_Adapter.ReadText(handle));
}
