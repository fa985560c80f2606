// SPDX-License-Identifier: MIT
//
// Device-state callbacks that change their list while it is walked: by index, with the size read
// anew after each call.
#include "tests/unit/manager/manager_test.h"

namespace {

class StateCallbackWalk : public ManagerTest {
  protected:
    void SetUp() override {
        InitWith(FakeDevices());
        Register(OnState<1>);
        Register(OnState<2>);
        Register(OnState<3>);
    }
    void Register(KOVAMGR_DEV_STATE_CALLBACK cb) {
        EXPECT_EQ(m_Manager.RegisterDeviceStateProcessCallback(cb), 20000);
    }
    void Remove(KOVAMGR_DEV_STATE_CALLBACK cb) {
        EXPECT_EQ(m_Manager.UnregisterDeviceStateProcessCallback(cb), 20000);
    }

    // The callbacks told, by number.
    std::string Told() {
        const size_t before = m_Recorder.Count();
        EXPECT_TRUE(m_Fake->NotifyOnThread(5));
        std::string numbers;
        const Lines lines = m_Recorder.Told();
        for (size_t i = before; i < lines.size(); ++i) {
            numbers += lines[i].substr(6, 1);
        }
        return numbers;
    }
};

} // namespace

TEST_F(StateCallbackWalk, GoesInOrderOfRegistration) { EXPECT_EQ(Told(), "123"); }

TEST_F(StateCallbackWalk, ACallbackThatRemovesItselfCostsItsSuccessorThisNotice) {
    m_Recorder.During("state 1", [this] { Remove(OnState<1>); });
    EXPECT_EQ(Told(), "13");
    EXPECT_EQ(Told(), "23");
}

TEST_F(StateCallbackWalk, ARemovedSuccessorIsNotCalledAnyMore) {
    m_Recorder.During("state 1", [this] { Remove(OnState<2>); });
    EXPECT_EQ(Told(), "13");
}

TEST_F(StateCallbackWalk, ARemovedPredecessorCostsTheNextOneThisNotice) {
    m_Recorder.During("state 2", [this] { Remove(OnState<1>); });
    EXPECT_EQ(Told(), "12");
    EXPECT_EQ(Told(), "23");
}

TEST_F(StateCallbackWalk, ACallbackThatIsAddedIsToldOfTheSameNotice) {
    m_Recorder.During("state 3", [this] { Register(OnState<4>); });
    EXPECT_EQ(Told(), "1234");
}

TEST_F(StateCallbackWalk, ManyAddedCallbacksMoveTheListWithoutHarm) {
    m_Recorder.During("state 1", [this] {
        for (const KOVAMGR_DEV_STATE_CALLBACK cb :
             {OnState<4>, OnState<5>, OnState<6>, OnState<7>, OnState<8>, OnState<9>}) {
            Register(cb);
        }
    });
    EXPECT_EQ(Told(), "123456789");
}

TEST_F(StateCallbackWalk, ACallbackMayRemoveAll) {
    m_Recorder.During("state 1", [this] {
        Remove(OnState<1>);
        Remove(OnState<2>);
        Remove(OnState<3>);
    });
    EXPECT_EQ(Told(), "1");
    EXPECT_EQ(Told(), "");
}

TEST_F(StateCallbackWalk, ANullEntryIsPassedOver) {
    ManagerProbe::DevStateCallbacks(m_Manager) = {nullptr, OnState<2>, nullptr, OnState<1>};
    EXPECT_EQ(Told(), "21");
}
