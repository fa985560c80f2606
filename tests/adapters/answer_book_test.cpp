// SPDX-License-Identifier: MIT
#include "adapters/shared/answer_book.h"

#include <gtest/gtest.h>

namespace {

using std::chrono::milliseconds;

// "a1 b2": devices a and b with one port each, that arrived first and second.
PortTable Table(const std::string& text) {
    PortTable table;
    for (size_t at = 0; at < text.size(); at += 3) {
        const std::string name = text.substr(at, 1);
        table.push_back({name, "", {{name, 0, static_cast<uint64_t>(text[at + 1])}}});
    }
    return table;
}

class AnswerBookTest : public testing::Test {
  protected:
    void Listen(const std::string& attached) {
        m_Book.SetTruth(Table(attached), m_Now);
        m_Book.Answer();
        m_Book.StartTelling(m_Now);
    }

    uint64_t Set(const std::string& attached) { return m_Book.SetTruth(Table(attached), m_Now); }

    std::string Answer() {
        std::string text;
        for (const DeviceEntry& device : *m_Book.Answer()) {
            text += device.name + static_cast<char>(device.ports[0].arrival) + " ";
        }
        return text;
    }

    // "-a1 " for a pull-out with that table.
    std::string TellOne() {
        const char* const sign = m_Book.BeginStep() == OS_ADAPT_DEVICE_PULLOUT ? "-" : "+";
        const std::string text = sign + Answer();
        m_Book.EndStep();
        return text;
    }

    std::string TellAll() {
        std::string text;
        while (m_Book.HasStep()) {
            text += TellOne();
        }
        return text;
    }

    AnswerBook m_Book;
    AnswerBook::Instant m_Now{std::chrono::steady_clock::now()};
};

} // namespace

TEST_F(AnswerBookTest, RunsOfOneKindAreOneStep) {
    Listen("a1 b2 c3 ");
    Set("b2 c3 ");
    Set("c3 ");
    Set("c3 d4 ");
    Set("c3 d4 e5 ");
    EXPECT_EQ("-c3 +c3 d4 e5 ", TellAll());
}

TEST_F(AnswerBookTest, AReplugThatIsSeenAsOneChangeIsStillTwoSteps) {
    Listen("a1 b2 ");
    Set("a3 b2 ");
    EXPECT_EQ("-b2 +a3 b2 ", TellAll());
}

TEST_F(AnswerBookTest, APortThatChangesHandsIsTwoSteps) {
    m_Book.SetTruth({{"a", "", {{"node", 0, 1}}}, {"b", "", {{"other", 0, 2}}}}, m_Now);
    m_Book.Answer();
    m_Book.StartTelling(m_Now);
    m_Book.SetTruth({{"b", "", {{"other", 0, 2}, {"node", 0, 3}}}}, m_Now);
    ASSERT_EQ(OS_ADAPT_DEVICE_PULLOUT, m_Book.BeginStep());
    ASSERT_EQ(1U, m_Book.Answer()->size());
    EXPECT_EQ(1U, m_Book.Answer()->front().ports.size());
    m_Book.EndStep();
    ASSERT_EQ(OS_ADAPT_DEVICE_INSERT, m_Book.BeginStep());
    EXPECT_EQ(2U, m_Book.Answer()->front().ports.size());
    m_Book.EndStep();
    EXPECT_FALSE(m_Book.HasStep());
}

TEST_F(AnswerBookTest, AStepWaitsForQuietButNotForEver) {
    Listen("");
    Set("a1 ");
    EXPECT_EQ(m_Now + milliseconds(10), m_Book.FirstStepDue());
    const AnswerBook::Instant start = m_Now;
    std::string attached = "a1 ";
    for (char next = 'b'; next < 'j'; ++next) {
        m_Now += milliseconds(8);
        attached += std::string(1, next) + "1 ";
        Set(attached);
    }
    EXPECT_EQ(start + milliseconds(40), m_Book.FirstStepDue());
}

TEST_F(AnswerBookTest, AStepThatNothingCanJoinIsDueAtOnce) {
    Listen("a1 ");
    Set("");
    Set("b2 ");
    EXPECT_LE(m_Book.FirstStepDue(), m_Now);
}

TEST_F(AnswerBookTest, BetweenStepsTheLastOneToldIsTheAnswer) {
    Listen("a1 ");
    Set("");
    EXPECT_EQ("a1 ", Answer());
    EXPECT_EQ("-", TellOne());
    EXPECT_EQ("", Answer());
}

TEST_F(AnswerBookTest, WhatIsTrueIsNoStepDuringAnother) {
    Listen("a1 b2 ");
    Set("b2 ");
    m_Book.BeginStep();
    Set("b2 c3 ");
    EXPECT_EQ("b2 ", Answer());
    m_Book.EndStep();
    EXPECT_EQ("+b2 c3 ", TellAll());
}

TEST_F(AnswerBookTest, ATicketIsToldWhenItsLastStepIs) {
    Listen("a1 ");
    const uint64_t first = Set("a2 ");
    EXPECT_FALSE(m_Book.IsTold(first));
    TellOne();
    EXPECT_FALSE(m_Book.IsTold(first));
    m_Book.BeginStep();
    EXPECT_FALSE(m_Book.IsTold(first));
    const uint64_t second = Set("");
    m_Book.EndStep();
    EXPECT_TRUE(m_Book.IsTold(first));
    EXPECT_FALSE(m_Book.IsTold(second));
    TellAll();
    EXPECT_TRUE(m_Book.IsTold(second));
}

TEST_F(AnswerBookTest, AnEndlessStormIsCutShortToTheDifference) {
    Listen("a1 b2 ");
    uint64_t last = 0;
    for (int i = 0; i < 1000; ++i) {
        Set("b2 ");
        last = Set("b2 c3 ");
    }
    EXPECT_FALSE(m_Book.IsTold(last));
    int steps = 0;
    std::string text;
    for (; m_Book.HasStep(); ++steps) {
        text = TellOne();
    }
    EXPECT_LE(steps, 65);
    EXPECT_EQ("+b2 c3 ", text);
    EXPECT_TRUE(m_Book.IsTold(last));
}

TEST_F(AnswerBookTest, WhenNobodyListensTheTruthIsTheAnswer) {
    Listen("a1 ");
    Set("b2 ");
    m_Book.StopTelling();
    EXPECT_FALSE(m_Book.HasStep());
    EXPECT_EQ("b2 ", Answer());
    const uint64_t ticket = Set("c3 ");
    EXPECT_EQ("c3 ", Answer());
    EXPECT_TRUE(m_Book.IsTold(ticket));
}

TEST_F(AnswerBookTest, AStepThatIsToldStaysTheAnswerAlsoWhenNobodyListensAnyMore) {
    Listen("a1 b2");
    Set("a1");
    m_Book.BeginStep();
    m_Book.StopTelling();
    const uint64_t ticket = Set("a3 c4");
    EXPECT_TRUE(m_Book.IsTold(ticket));
    EXPECT_EQ("a1 ", Answer());
    m_Book.EndStep();
    EXPECT_EQ("a3 c4 ", Answer());
    m_Book.StartTelling(m_Now);
    EXPECT_FALSE(m_Book.HasStep());
}

TEST_F(AnswerBookTest, AListenerThatComesDuringAStepIsToldWhatFollowsIt) {
    Listen("a1 b2");
    Set("a1");
    m_Book.BeginStep();
    m_Book.StopTelling();
    Set("a3");
    m_Book.StartTelling(m_Now);
    EXPECT_EQ("a1 ", Answer());
    m_Book.EndStep();
    EXPECT_EQ("a1 ", Answer());
    EXPECT_EQ("-+a3 ", TellAll());
}

TEST_F(AnswerBookTest, ClearingDuringAStepForgetsItToo) {
    Listen("a1 b2");
    Set("a1");
    m_Book.BeginStep();
    m_Book.Clear();
    EXPECT_EQ("", Answer());
    m_Book.EndStep();
    EXPECT_EQ("", Answer());
}
