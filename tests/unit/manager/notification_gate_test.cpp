// SPDX-License-Identifier: MIT
#include "manager/notification_gate.h"

#include <gtest/gtest.h>

#include <atomic>
#include <optional>
#include <thread>

#include "tests/harness/manager_probe.h"
#include "tests/harness/wait_until.h"

namespace {

class Gate : public testing::Test {
  protected:
    CKOVASMgrPort* Enter() { return NotificationGate::Stay(m_Gate).Manager(); }

    // Closes on a thread of its own.
    void StartClosing(const CKOVASMgrPort* manager) {
        m_Closer = std::thread([this, manager] {
            m_Gate.Close(manager);
            m_bClosed = true;
        });
        ASSERT_TRUE(WaitUntil([this] { return Enter() == nullptr; }));
    }
    bool IsClosedWithin(std::chrono::milliseconds bound) {
        return WaitUntil([this] { return m_bClosed.load(); }, bound);
    }

    CKOVASMgrPort m_Manager;
    CKOVASMgrPort m_Other;
    NotificationGate m_Gate;
    std::thread m_Closer;
    std::atomic<bool> m_bClosed{false};
};

} // namespace

TEST_F(Gate, StartsClosed) { EXPECT_EQ(Enter(), nullptr); }

TEST_F(Gate, LetsInToTheManagerItWasOpenedFor) {
    m_Gate.Open(&m_Manager);
    EXPECT_EQ(Enter(), &m_Manager);
    EXPECT_EQ(Enter(), &m_Manager);
}

TEST_F(Gate, ClosedLetsNobodyInUntilItIsOpenedAgain) {
    m_Gate.Open(&m_Manager);
    m_Gate.Close(&m_Manager);
    EXPECT_EQ(Enter(), nullptr);
    m_Gate.Close(&m_Manager);
    EXPECT_EQ(Enter(), nullptr);
    m_Gate.Open(&m_Other);
    EXPECT_EQ(Enter(), &m_Other);
}

TEST_F(Gate, IsNotClosedForAnotherManager) {
    m_Gate.Open(&m_Manager);
    m_Gate.Close(&m_Other);
    EXPECT_EQ(Enter(), &m_Manager);
}

TEST_F(Gate, ClosingWaitsForWhoeverIsInside) {
    m_Gate.Open(&m_Manager);
    {
        const NotificationGate::Stay stay(m_Gate);
        StartClosing(&m_Manager);
        EXPECT_FALSE(IsClosedWithin(std::chrono::milliseconds(100)));
    }
    EXPECT_TRUE(IsClosedWithin(std::chrono::seconds(10)));
    m_Closer.join();
}

TEST_F(Gate, ClosingWaitsForTheLastOfMany) {
    m_Gate.Open(&m_Manager);
    std::optional<NotificationGate::Stay> first(std::in_place, m_Gate);
    std::optional<NotificationGate::Stay> second(std::in_place, m_Gate);
    StartClosing(&m_Manager);
    first.reset();
    EXPECT_FALSE(IsClosedWithin(std::chrono::milliseconds(100)));
    second.reset();
    EXPECT_TRUE(IsClosedWithin(std::chrono::seconds(10)));
    m_Closer.join();
}

TEST_F(Gate, AStayInsideAStayIsAnsweredAtOnceAlsoWhileTheGateIsClosing) {
    m_Gate.Open(&m_Manager);
    {
        const NotificationGate::Stay outer(m_Gate);
        EXPECT_EQ(Enter(), &m_Manager);
        StartClosing(&m_Manager);
        EXPECT_EQ(Enter(), nullptr);
    }
    m_Closer.join();
}

TEST_F(Gate, AbandonedForgetsWhoIsInside) {
    m_Gate.Open(&m_Manager);
    const NotificationGate::Stay lost(m_Gate);
    m_Gate.Abandon();
    EXPECT_EQ(Enter(), nullptr);
    m_Gate.Open(&m_Other);
    EXPECT_EQ(Enter(), &m_Other);
    StartClosing(&m_Other);
    EXPECT_TRUE(IsClosedWithin(std::chrono::seconds(10)));
    m_Closer.join();
}

TEST_F(Gate, AForgottenStayIsNotCountedOutWhenItEnds) {
    m_Gate.Open(&m_Manager);
    std::optional<NotificationGate::Stay> lost(std::in_place, m_Gate);
    m_Gate.Abandon();
    m_Gate.Open(&m_Other);
    std::optional<NotificationGate::Stay> stay(std::in_place, m_Gate);
    lost.reset();
    StartClosing(&m_Other);
    EXPECT_FALSE(IsClosedWithin(std::chrono::milliseconds(100)));
    stay.reset();
    EXPECT_TRUE(IsClosedWithin(std::chrono::seconds(10)));
    m_Closer.join();
}
