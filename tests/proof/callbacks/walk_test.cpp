// SPDX-License-Identifier: MIT
//
// Lists of callbacks that grow and shrink while they are walked: random changes against the rules.
#include <algorithm>
#include <utility>

#include "tests/harness/figures.h"
#include "tests/proof/callbacks/seed.h"
#include "tests/proof/callbacks/walk_script.h"
#include "tests/unit/manager/sweep_test.h"

namespace {

using List = WalkScript::List;

constexpr int kWalks = 20000;

// What the callbacks of this process do now, and that they did.
WalkScript s_Script;
List s_Calls;
void (*s_Change)(const WalkScript::Change& change) = nullptr;

void Called(int callback) {
    s_Calls.push_back(callback);
    for (const WalkScript::Change& change : s_Script.changes.at(static_cast<size_t>(callback))) {
        s_Change(change);
    }
}

template <int n> void OnWalkData(void* /*data*/, int /*length*/) { Called(n); }
template <int n> void OnWalkNotice(_KOVAMGR_DEV_STATE_TYPE_ /*state*/) { Called(n); }

constexpr KOVAMGR_READ_CALLBACK kReadCallbacks[] = {OnWalkData<0>, OnWalkData<1>, OnWalkData<2>,
                                                    OnWalkData<3>, OnWalkData<4>, OnWalkData<5>,
                                                    OnWalkData<6>, OnWalkData<7>};
constexpr KOVAMGR_DEV_STATE_CALLBACK kStateCallbacks[] = {
    OnWalkNotice<0>, OnWalkNotice<1>, OnWalkNotice<2>, OnWalkNotice<3>,
    OnWalkNotice<4>, OnWalkNotice<5>, OnWalkNotice<6>, OnWalkNotice<7>};

void ChangeRead(const WalkScript::Change& change) {
    CKOVASMgrPort& manager = *CKOVASMgrPort::GetInstance();
    const KOVAMGR_READ_CALLBACK cb = kReadCallbacks[change.callback];
    EXPECT_EQ(change.isAddition ? manager.RegisterReadCallBack(1, cb)
                                : manager.UnregisterReadCallBack(1, cb),
              KOVAMGR_OK);
}

void ChangeState(const WalkScript::Change& change) {
    CKOVASMgrPort& manager = *CKOVASMgrPort::GetInstance();
    const KOVAMGR_DEV_STATE_CALLBACK cb = kStateCallbacks[change.callback];
    EXPECT_EQ(change.isAddition ? manager.RegisterDeviceStateProcessCallback(cb)
                                : manager.UnregisterDeviceStateProcessCallback(cb),
              KOVAMGR_OK);
}

class CallbackListWalk : public SweepTest {
  protected:
    void StartReading() {
        LoadWith(FakeDevices().Device("Modem").Port("COM1"));
        Open(1);
        s_Change = ChangeRead;
    }
    void StartNoticing() {
        LoadWith(FakeDevices());
        s_Change = ChangeState;
    }

    List CallsOfASweep() {
        s_Calls.clear();
        m_Fake->PushData("COM1", "a");
        Sweep();
        return s_Calls;
    }
    static List CallsOfANotice() {
        s_Calls.clear();
        CKOVASMgrPort::ProcessDeviceState(static_cast<_OS_ADAPT_DEVICESTATUS_TYPE>(5));
        return s_Calls;
    }

    // Makes the list the same as this one.
    template <typename Callbacks> static void Fill(const Callbacks& callbacks, const List& list) {
        for (int callback = 0; callback < static_cast<int>(std::size(callbacks)); ++callback) {
            s_Change({false, callback});
        }
        for (const int callback : list) {
            s_Change({true, callback});
        }
    }

    // In random order.
    List SomeCallbacks() {
        List list{0, 1, 2, 3, 4, 5, 6, 7};
        std::shuffle(list.begin(), list.end(), m_Random);
        list.resize(std::uniform_int_distribution<size_t>(0, list.size())(m_Random));
        return list;
    }

    std::mt19937 m_Random{Seed()};
};

} // namespace

TEST_F(CallbackListWalk, OfReadCallbacksKeepsToItsRuleWhateverTheyChange) {
    StartReading();
    List list;
    for (int walk = 0; walk < kWalks && !HasFailure(); ++walk) {
        if (walk % 4 == 0) {
            list = SomeCallbacks();
            Fill(kReadCallbacks, list);
        }
        s_Script = WalkScript::Random(m_Random);
        EXPECT_EQ(CallsOfASweep(), s_Script.ReadWalk(list));
    }
    NoteFigure("callbacks.read_walks", kWalks);
}

TEST_F(CallbackListWalk, OfStateCallbacksKeepsToItsRuleWhateverTheyChange) {
    StartNoticing();
    List list;
    for (int walk = 0; walk < kWalks && !HasFailure(); ++walk) {
        if (walk % 4 == 0) {
            list = SomeCallbacks();
            Fill(kStateCallbacks, list);
        }
        s_Script = WalkScript::Random(m_Random);
        EXPECT_EQ(CallsOfANotice(), s_Script.StateWalk(list));
    }
    NoteFigure("callbacks.state_walks", kWalks);
}

TEST_F(CallbackListWalk, ReadCallbacksThatRemoveThemselvesCostNobodyACall) {
    StartReading();
    for (int walk = 0; walk < kWalks / 10 && !HasFailure(); ++walk) {
        const List list = SomeCallbacks();
        const List leaving = SomeCallbacks();
        Fill(kReadCallbacks, list);
        s_Script = WalkScript::OfSelfRemovalBy(leaving);
        EXPECT_EQ(CallsOfASweep(), list);
        List staying;
        std::copy_if(list.begin(), list.end(), std::back_inserter(staying), [&](int callback) {
            return std::find(leaving.begin(), leaving.end(), callback) == leaving.end();
        });
        EXPECT_EQ(CallsOfASweep(), staying);
    }
}

TEST_F(CallbackListWalk, EveryStateCallbackThatRemovesItselfCostsItsSuccessorThatNotice) {
    StartNoticing();
    for (int walk = 0; walk < kWalks / 10 && !HasFailure(); ++walk) {
        const List list = SomeCallbacks();
        const List leaving = SomeCallbacks();
        Fill(kStateCallbacks, list);
        s_Script = WalkScript::OfSelfRemovalBy(leaving);
        List expected;
        for (size_t place = 0; place < list.size(); ++place) {
            expected.push_back(list[place]);
            const bool leaves =
                std::find(leaving.begin(), leaving.end(), list[place]) != leaving.end();
            place += leaves ? 1 : 0;
        }
        EXPECT_EQ(CallsOfANotice(), expected);
    }
}
