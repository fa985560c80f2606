// SPDX-License-Identifier: MIT
//
// What a scenario makes of the host's calls, by a clock that stands still.
#include <gtest/gtest.h>

#include <chrono>
#include <memory>
#include <string>
#include <vector>

#include "adapters/virtual/language/event_reader.h"
#include "adapters/virtual/simulation/host_calls.h"

using std::chrono::milliseconds;
using std::chrono::seconds;

namespace {

class HostCallsOf : public testing::Test {
  protected:
    // The port p1, and events.
    void Use(const std::vector<std::string>& events, std::optional<long> baud = {}) {
        PortSpec port;
        port.name = "p1";
        port.farEnd = FarEndKind::Scripted;
        port.baud = baud;
        m_Scenario.devices.push_back({"d", "", "", true, {port}});
        for (const std::string& event : events) {
            m_Scenario.events.push_back(ReadEvent(event, "p1"));
        }
        m_Calls = std::make_unique<HostCalls>(m_Scenario, m_Clock, m_Log);
        m_Calls->EndOpen(*m_Calls->Begin(Operation::Open, "p1"), kHandle);
    }

    HostCall Begin(Operation operation) const { return *m_Calls->Begin(operation, kHandle); }

    void Write(const std::string& bytes) const {
        m_Calls->EndWrite(Begin(Operation::Write), bytes, bytes.size());
    }

    // "milliseconds bytes " for all that was caused.
    std::string Caused() const {
        std::string text;
        while (const auto due = m_Calls->NextPending()) {
            const auto pending = m_Calls->TakePending(*due);
            text += std::to_string(due->count() / 1000) + " " + pending->action.bytes + " ";
        }
        return text;
    }

    static constexpr int kHandle = 7;

    Scenario m_Scenario;
    ScenarioClock m_Clock{1}; // stands still
    EventLog m_Log{{"p1"}};
    std::unique_ptr<HostCalls> m_Calls;
};

} // namespace

TEST_F(HostCallsOf, AnAnswerIsDueAfterItsTime) {
    Use({"on \"a\" reply \"x\" after 20ms", "on \"b\" reply \"y\""});
    Write("ab");
    EXPECT_EQ("0 y 20 x ", Caused());
}

TEST_F(HostCallsOf, AnAnswerIsDueWhenTheLineHasCarriedItsLastByte) {
    Use({"on \"ab\" reply \"x\" after 20ms"}, 10000); // a byte a millisecond
    const HostCall call = Begin(Operation::Write);
    call.port->pace->NoteWritten(100);
    m_Calls->EndWrite(call, std::string(49, '-') + "ab" + std::string(49, '-'), 100);
    EXPECT_EQ("71 x ", Caused());
}

TEST_F(HostCallsOf, OnlyCallsThatAScenarioIsAboutMatter) {
    Use({});
    EXPECT_TRUE(m_Calls->Matters(Operation::Open));
    EXPECT_TRUE(m_Calls->Matters(Operation::Enumerate));
    EXPECT_FALSE(m_Calls->Matters(Operation::Write));
    EXPECT_FALSE(m_Calls->Matters(Operation::Read));
    m_Calls->Arm(ReadAction("fail read from p1"), seconds(0), 99);
    EXPECT_TRUE(m_Calls->Matters(Operation::Read));
    EXPECT_FALSE(m_Calls->Matters(Operation::Write));
}

TEST_F(HostCallsOf, ReadsMatterWhenAnEventOrABaudRateIsAboutThem) {
    Use({"at 1h fail read"}, 9600);
    EXPECT_TRUE(m_Calls->Matters(Operation::Read));
    EXPECT_TRUE(m_Calls->Matters(Operation::Write));
}

TEST_F(HostCallsOf, AnUnknownHandleIsNobodys) {
    Use({});
    EXPECT_FALSE(m_Calls->Begin(Operation::Read, 8));
    EXPECT_FALSE(m_Calls->Begin(Operation::Open, "p2"));
    EXPECT_FALSE(m_Calls->Begin(Operation::Open, ""));
}

TEST_F(HostCallsOf, AnOpeningAnewTakesTheHandleBeforeAway) {
    Use({});
    m_Calls->EndOpen(*m_Calls->Begin(Operation::Open, "p1"), 8);
    EXPECT_FALSE(m_Calls->Begin(Operation::Read, kHandle));
    EXPECT_EQ(8, m_Calls->Begin(Operation::Read, 8)->port->handle);
}

TEST_F(HostCallsOf, CallsOfAPortAreCountedOverItsOpenings) {
    Use({"on 3rd write fail"});
    Write("a");
    Write("a");
    m_Calls->EndOpen(*m_Calls->Begin(Operation::Open, "p1"), kHandle);
    const HostCall call = Begin(Operation::Write);
    EXPECT_EQ(3U, call.number);
    EXPECT_TRUE(call.faults.fails);
}

TEST_F(HostCallsOf, WhoWaitsForWhatTheHostCausesIsWoken) {
    Use({"on \"a\" reply \"x\""});
    int woken = 0;
    m_Calls->SetWaker([](void* count) { ++*static_cast<int*>(count); }, &woken);
    Write("b");
    EXPECT_EQ(0, woken);
    Write("a");
    EXPECT_EQ(1, woken);
    m_Calls->SetWaker(nullptr, nullptr);
    Write("a");
    EXPECT_EQ(1, woken);
}

TEST_F(HostCallsOf, ARecordedAnswerOfAnEarlierOpeningDoesNotComeAnyMore) {
    PortSpec port;
    port.name = "p1";
    port.farEnd = FarEndKind::Recording;
    port.openings = {{"", {{"first", 0, seconds(1)}}}, {"", {{"second", 0, seconds(1)}}}};
    m_Scenario.devices.push_back({"d", "", "", true, {port}});
    m_Calls = std::make_unique<HostCalls>(m_Scenario, m_Clock, m_Log);
    m_Calls->EndOpen(*m_Calls->Begin(Operation::Open, "p1"), 1);
    m_Calls->EndOpen(*m_Calls->Begin(Operation::Open, "p1"), 2);
    const auto pending = m_Calls->TakePending(seconds(1));
    ASSERT_TRUE(pending);
    EXPECT_EQ("second", pending->action.bytes);
    EXPECT_FALSE(m_Calls->TakePending(seconds(1)));
}
