// SPDX-License-Identifier: MIT
//
// Port operations hold the port lock through the adapter's call, and let it go on every way out.
#include <atomic>
#include <future>
#include <stdexcept>
#include <thread>

#include "tests/unit/manager/manager_test.h"

namespace {

// One operation of the manager that calls the adapter; its port 1 is open, its port 2 is not.
struct PortOperation {
    std::string name;
    FakeCall call;
    void (*run)(CKOVASMgrPort& manager);
};

std::vector<PortOperation> PortOperations() {
    return {
        {"Open", FakeCall::kOpen, [](CKOVASMgrPort& manager) { manager.Open(2); }},
        {"Close", FakeCall::kClose, [](CKOVASMgrPort& manager) { manager.Close(1); }},
        {"Write", FakeCall::kWrite,
         [](CKOVASMgrPort& manager) {
             long result = 0;
             manager.Write(1, "abc", 3, 0, KOVAMGR_COMMAND_PRIORITY_NORMAL, &result);
         }},
        {"Read", FakeCall::kRead,
         [](CKOVASMgrPort& manager) {
             char buffer[8];
             long result = 0;
             manager.Read(reinterpret_cast<void*>(1), buffer, sizeof(buffer), &result);
         }},
        {"DetermineAddPort", FakeCall::kEnum,
         [](CKOVASMgrPort& manager) { manager.DetermineAddPort(); }},
        {"DetermineSubtractPort", FakeCall::kEnum,
         [](CKOVASMgrPort& manager) { manager.DetermineSubtractPort(); }},
    };
}

void PrintTo(const PortOperation& operation, std::ostream* out) { *out << operation.name; }

std::string OperationName(const testing::TestParamInfo<PortOperation>& info) {
    return info.param.name;
}

class PortLock : public ManagerTest, public testing::WithParamInterface<PortOperation> {
  protected:
    void SetUp() override {
        LoadWith(FakeDevices().Device("Modem").Port("COM1").Port("COM2"));
        ASSERT_EQ(m_Manager.Open(1), 20000);
    }

    bool IsLockFree(std::chrono::milliseconds bound) {
        std::atomic<bool> isAnswered{false};
        m_Asker = std::thread([this, &isAnswered] {
            m_Manager.GetPortState(1);
            isAnswered = true;
        });
        const bool isFree = WaitUntil([&] { return isAnswered.load(); }, bound);
        m_Fake->Unblock();
        m_Asker.join();
        return isFree;
    }

    std::thread m_Asker;
};

} // namespace

INSTANTIATE_TEST_SUITE_P(Through, PortLock, testing::ValuesIn(PortOperations()), OperationName);

TEST_P(PortLock, IsHeldWhileTheAdapterIsCalled) {
    m_Fake->Block(GetParam().call, FakeBlock::kInRead);
    std::thread caller([this] { GetParam().run(m_Manager); });
    ASSERT_TRUE(WaitUntil([this] { return m_Fake->Blocked() == 1; }));
    EXPECT_FALSE(IsLockFree(std::chrono::milliseconds(100)));
    caller.join();
}

TEST_P(PortLock, IsFreeAfterwards) {
    const long before = m_Fake->Calls(GetParam().call);
    GetParam().run(m_Manager);
    EXPECT_EQ(m_Fake->Calls(GetParam().call), before + 1);
    EXPECT_TRUE(IsLockFree(std::chrono::seconds(10)));
}

TEST_P(PortLock, IsFreeAfterTheAdapterHasFailed) {
    m_Fake->SetResult(GetParam().call, OS_ADAPT_FAILED);
    GetParam().run(m_Manager);
    EXPECT_TRUE(IsLockFree(std::chrono::seconds(10)));
}

TEST_P(PortLock, IsFreeAfterTheAdapterHasThrown) {
    m_Fake->SetHook(GetParam().call, [] { throw std::runtime_error("broken"); });
    EXPECT_THROW(GetParam().run(m_Manager), std::runtime_error);
    m_Fake->SetHook(GetParam().call, {});
    EXPECT_TRUE(IsLockFree(std::chrono::seconds(10)));
}
