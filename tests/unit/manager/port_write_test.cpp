// SPDX-License-Identifier: MIT
#include "tests/unit/manager/manager_test.h"

namespace {

constexpr long kUntouched = 5;

class PortWrite : public ManagerTest {
  protected:
    long Write(int port, const std::string& data) {
        return m_Manager.Write(port, data.data(), static_cast<long>(data.size()), 0,
                               KOVAMGR_COMMAND_PRIORITY_NORMAL, &m_nResult);
    }

    long m_nResult = kUntouched;
};

} // namespace

TEST_F(PortWrite, OnAnUninitialisedManagerFailsForThatAlsoWithoutAnAdapter) {
    EXPECT_EQ(Write(1, "abc"), -1);
    EXPECT_EQ(m_nResult, 20003);
    ASSERT_TRUE(m_Manager.LoadDll());
    m_nResult = kUntouched;
    EXPECT_EQ(Write(1, "abc"), -1);
    EXPECT_EQ(m_nResult, 20003);
    EXPECT_EQ(NewLog(), "");
}

TEST_F(PortWrite, ToAnUnknownIdentifierIsABadArgument) {
    InitWith(FakeDevices().Device("Modem").Port("COM1"));
    EXPECT_EQ(Write(2, "abc"), -1);
    EXPECT_EQ(m_nResult, 20001);
    EXPECT_EQ(NewLog(), Info("LEAVE CKOVASMgrPort::Write. ON -1"));
    EXPECT_TRUE(m_Fake->Journal().empty());
}

TEST_F(PortWrite, ToAClosedPortReturnsTheCodeAndLeavesTheErrorVariable) {
    InitWith(FakeDevices().Device("Modem").Port("COM1"));
    EXPECT_EQ(Write(1, "abc"), 20006);
    EXPECT_EQ(m_nResult, kUntouched);
    EXPECT_EQ(NewLog(), "");
    EXPECT_TRUE(m_Fake->Journal().empty());
}

TEST_F(PortWrite, HandsTheBytesToTheAdapterAndReturnsTheirCount) {
    InitWith(FakeDevices().Device("Modem").Port("COM1"));
    m_Fake->SetHandle("COM1", 42);
    ASSERT_EQ(m_Manager.Open(1), 20000);
    NewLog();

    const std::string data("a\0b", 3);
    EXPECT_EQ(Write(1, data), 3);

    EXPECT_EQ(m_Fake->Written("COM1"), (Lines{data}));
    EXPECT_EQ(m_Fake->Journal(), (Lines{"Open COM1 -> 42", "Write 42 3"}));
    EXPECT_EQ(m_nResult, kUntouched);
    EXPECT_EQ(NewLog(), "");
}

TEST_F(PortWrite, OfWhichTheAdapterTakesNothingReturnsZero) {
    InitWith(FakeDevices().Device("Modem").Port("COM1"));
    ASSERT_EQ(m_Manager.Open(1), 20000);
    m_Fake->SetWriteCount(0);
    EXPECT_EQ(Write(1, "abc"), 0);
    EXPECT_EQ(m_nResult, kUntouched);
}

TEST_F(PortWrite, ReturnsTheCountThatTheAdapterReportsInOneCall) {
    InitWith(FakeDevices().Device("Modem").Port("COM1"));
    ASSERT_EQ(m_Manager.Open(1), 20000);
    for (const long count : {0L, 1L, 2L, -7L, 20001L, 100L}) {
        m_Fake->SetWriteCount(count);
        EXPECT_EQ(Write(1, "abc"), count);
        EXPECT_EQ(m_nResult, kUntouched);
    }
    EXPECT_EQ(m_Fake->Calls(FakeCall::kWrite), 6) << "the rest of a short write is not sent";
}

TEST_F(PortWrite, RefusedByTheAdapterFails) {
    InitWith(FakeDevices().Device("Modem").Port("COM1"));
    ASSERT_EQ(m_Manager.Open(1), 20000);
    NewLog();
    m_Fake->SetResult(FakeCall::kWrite, OS_ADAPT_FAILED);
    EXPECT_EQ(Write(1, "abc"), -1);
    EXPECT_EQ(m_nResult, 20002);
    EXPECT_EQ(NewLog(), Info("Write failed.\n"));
    EXPECT_EQ(m_Fake->Calls(FakeCall::kWrite), 1) << "nothing is tried again";
}

TEST_F(PortWrite, AnyResultBut30000IsAFailure) {
    InitWith(FakeDevices().Device("Modem").Port("COM1"));
    ASSERT_EQ(m_Manager.Open(1), 20000);
    for (const int result : {0, 1, -1, 20000, 29999, 30001}) {
        m_Fake->SetResult(FakeCall::kWrite, result);
        EXPECT_EQ(Write(1, "abc"), -1) << result;
    }
}

TEST_F(PortWrite, WithoutAnErrorVariableFailsAsWell) {
    const auto write = [this](int port) {
        return m_Manager.Write(port, "abc", 3, 0, KOVAMGR_COMMAND_PRIORITY_NORMAL, nullptr);
    };
    EXPECT_EQ(write(1), -1);
    InitWith(FakeDevices().Device("Modem").Port("COM1"));
    EXPECT_EQ(write(2), -1);
    EXPECT_EQ(write(1), 20006);
    ASSERT_EQ(m_Manager.Open(1), 20000);
    EXPECT_EQ(write(1), 3);
    m_Fake->SetResult(FakeCall::kWrite, OS_ADAPT_FAILED);
    EXPECT_EQ(write(1), -1);
}

TEST_F(PortWrite, IgnoresTheExtraArgumentAndThePriority) {
    InitWith(FakeDevices().Device("Modem").Port("COM1"));
    ASSERT_EQ(m_Manager.Open(1), 20000);
    for (const long extra : {-1L, 0L, 77L}) {
        for (const int priority : {0, -3, 20150, 20151}) {
            EXPECT_EQ(m_Manager.Write(1, "abc", 3, extra,
                                      static_cast<_COMMAND_PRIORITY_TYPE_>(priority), &m_nResult),
                      3);
        }
    }
    EXPECT_EQ(m_Fake->Written("COM1"), Lines(12, "abc"));
}
