// SPDX-License-Identifier: MIT
#include "tests/unit/manager/manager_test.h"

namespace {

constexpr long kUntouched = 5;

// Reads on the manager's behalf happen in sweeps; here nobody sweeps.
class PortRead : public ManagerTest {
  protected:
    long Read(int handle) {
        return m_Manager.Read(reinterpret_cast<void*>(static_cast<intptr_t>(handle)), m_Buffer,
                              sizeof(m_Buffer), &m_nResult);
    }

    char m_Buffer[8] = {};
    long m_nResult = kUntouched;
};

} // namespace

TEST_F(PortRead, OnAnUninitialisedManagerFailsForThatAlsoWithoutAnAdapter) {
    EXPECT_EQ(Read(1), -1);
    EXPECT_EQ(m_nResult, 20003);
    ASSERT_TRUE(m_Manager.LoadDll());
    m_nResult = kUntouched;
    EXPECT_EQ(Read(-1), -1);
    EXPECT_EQ(m_nResult, 20003);
    EXPECT_EQ(NewLog(), "");
}

TEST_F(PortRead, FromNoHandleFailsAndLeavesTheErrorVariable) {
    LoadWith(FakeDevices());
    EXPECT_EQ(Read(-1), -1);
    EXPECT_EQ(m_nResult, kUntouched);
    EXPECT_EQ(NewLog(), "");
    EXPECT_EQ(m_Fake->Calls(FakeCall::kRead), 0);
}

TEST_F(PortRead, TakesTheLower32BitsOfAHandle) {
    LoadWith(FakeDevices());
    const auto read = [this](uintptr_t handle) {
        return m_Manager.Read(reinterpret_cast<void*>(handle), m_Buffer, 8, &m_nResult);
    };
    EXPECT_EQ(read(0xffffffffu), -1) << "-1 without its sign";
    EXPECT_EQ(m_Fake->Calls(FakeCall::kRead), 0);
    EXPECT_EQ(read(0xfffffffeu), 0);
    EXPECT_EQ(m_Fake->Calls(FakeCall::kRead), 1);
}

TEST_F(PortRead, ReturnsWhatTheAdapterHasForTheHandle) {
    LoadWith(FakeDevices().Device("Modem").Port("COM1"));
    m_Fake->SetHandle("COM1", 42);
    ASSERT_EQ(m_Manager.Open(1), 20000);
    NewLog();
    m_Fake->PushData("COM1", "0123456789");

    EXPECT_EQ(Read(42), 8) << "no more than there is room for";
    EXPECT_EQ(std::string(m_Buffer, 8), "01234567");
    EXPECT_EQ(Read(42), 2);
    EXPECT_EQ(std::string(m_Buffer, 2), "89");
    EXPECT_EQ(Read(42), 0);
    EXPECT_EQ(m_nResult, kUntouched);
    EXPECT_EQ(NewLog(), "");
}

TEST_F(PortRead, DoesNotLookTheHandleUp) {
    LoadWith(FakeDevices());
    for (const int handle : {0, 7, -2, 2147483647}) {
        EXPECT_EQ(Read(handle), 0) << handle;
    }
    EXPECT_EQ(m_Fake->Calls(FakeCall::kRead), 4);
}

TEST_F(PortRead, ReturnsZeroWhenTheAdapterStoresNoCount) {
    LoadWith(FakeDevices().Device("Modem").Port("COM1"));
    ASSERT_EQ(m_Manager.Open(1), 20000);
    m_Fake->PushData("COM1", "abc");
    EXPECT_EQ(Read(1), 3);
    m_Fake->PushRead("COM1", {"abc", {}, false, OS_ADAPT_OK});
    EXPECT_EQ(Read(1), 0);
}

TEST_F(PortRead, RefusedByTheAdapterFails) {
    LoadWith(FakeDevices());
    m_Fake->SetResult(FakeCall::kRead, OS_ADAPT_FAILED);
    EXPECT_EQ(Read(1), -1);
    EXPECT_EQ(m_nResult, 20002);
    EXPECT_EQ(NewLog(), Info("Read failed.\n"));
}

TEST_F(PortRead, AnyResultBut30000IsAFailure) {
    LoadWith(FakeDevices());
    for (const int result : {0, 1, -1, 20000, 29999, 30001}) {
        m_Fake->SetResult(FakeCall::kRead, result);
        EXPECT_EQ(Read(1), -1) << result;
    }
}

TEST_F(PortRead, WithoutAnErrorVariableFailsAsWell) {
    const auto read = [this] {
        return m_Manager.Read(reinterpret_cast<void*>(1), m_Buffer, sizeof(m_Buffer), nullptr);
    };
    EXPECT_EQ(read(), -1);
    LoadWith(FakeDevices());
    m_Fake->SetResult(FakeCall::kRead, OS_ADAPT_FAILED);
    EXPECT_EQ(read(), -1);
}
