// SPDX-License-Identifier: MIT
//
// Read callbacks that change the list they stand in, while it is walked.
#include <algorithm>

#include "tests/unit/manager/sweep_test.h"

namespace {

class ReadCallbackWalk : public SweepTest {
  protected:
    void SetUp() override {
        LoadWith(FakeDevices().Device("Modem").Port("COM1").Port("COM2"));
        Register(1, OnRead<1>);
        Register(1, OnRead<2>);
        Register(1, OnRead<3>);
        Open(1);
    }

    void Remove(KOVAMGR_READ_CALLBACK cb) {
        EXPECT_EQ(m_Manager.UnregisterReadCallBack(1, cb), KOVAMGR_OK);
    }

    void LoadAnotherDevice() {
        FakeDevices().Device("Modem").Port("COM1").Port("COM2").Device("Scale").Port("COM3").Apply(
            *m_Fake);
        m_Manager.DetermineAddPort();
        Register(3, OnRead<1>);
        Register(3, OnRead<4>);
    }

    // A notice of the adapter, on the thread that sweeps.
    void PullOut(const FakeDevices& left) {
        left.Apply(*m_Fake);
        CKOVASMgrPort::ProcessDeviceState(OS_ADAPT_DEVICE_PULLOUT);
    }

    Lines ToldBySweepOf(const std::string& data) {
        m_Fake->PushData("COM1", data);
        return ToldBySweep();
    }
};

} // namespace

TEST_F(ReadCallbackWalk, ACallbackThatRemovesItselfCostsItsSuccessorNothing) {
    m_Recorder.During("read 1", [this] { Remove(OnRead<1>); });
    EXPECT_EQ(ToldBySweepOf("a"), (Lines{"read 1: a", "read 2: a", "read 3: a"}));
    EXPECT_EQ(ToldBySweepOf("b"), (Lines{"read 2: b", "read 3: b"}));
}

TEST_F(ReadCallbackWalk, EveryCallbackMayRemoveItself) {
    m_Recorder.During("read 1", [this] { Remove(OnRead<1>); });
    m_Recorder.During("read 2", [this] { Remove(OnRead<2>); });
    m_Recorder.During("read 3", [this] { Remove(OnRead<3>); });
    EXPECT_EQ(ToldBySweepOf("a"), (Lines{"read 1: a", "read 2: a", "read 3: a"}));
    EXPECT_EQ(ToldBySweepOf("b"), Lines());
}

TEST_F(ReadCallbackWalk, ARemovedSuccessorIsNotCalledAnyMore) {
    m_Recorder.During("read 1", [this] { Remove(OnRead<2>); });
    EXPECT_EQ(ToldBySweepOf("a"), (Lines{"read 1: a", "read 3: a"}));
}

TEST_F(ReadCallbackWalk, ARemovedPredecessorCostsNobodyACall) {
    m_Recorder.During("read 2", [this] { Remove(OnRead<1>); });
    EXPECT_EQ(ToldBySweepOf("a"), (Lines{"read 1: a", "read 2: a", "read 3: a"}));
}

TEST_F(ReadCallbackWalk, ACallbackMayRemoveAll) {
    m_Recorder.During("read 1", [this] {
        Remove(OnRead<1>);
        Remove(OnRead<2>);
        Remove(OnRead<3>);
    });
    EXPECT_EQ(ToldBySweepOf("a"), (Lines{"read 1: a"}));
}

TEST_F(ReadCallbackWalk, ACallbackThatIsAddedIsCalledForTheSameData) {
    m_Recorder.During("read 3", [this] { Register(1, OnRead<4>); });
    EXPECT_EQ(ToldBySweepOf("a"), (Lines{"read 1: a", "read 2: a", "read 3: a", "read 4: a"}));
}

TEST_F(ReadCallbackWalk, ManyAddedCallbacksMoveTheListWithoutHarm) {
    m_Recorder.During("read 1", [this] {
        for (const KOVAMGR_READ_CALLBACK cb :
             {OnRead<4>, OnRead<5>, OnRead<6>, OnRead<7>, OnRead<8>, OnRead<9>}) {
            Register(1, cb);
        }
    });
    EXPECT_EQ(ToldBySweepOf("a").size(), 9u);
}

TEST_F(ReadCallbackWalk, CallbacksThatAlwaysMoveToTheEndDoNotKeepItGoing) {
    for (const int n : {1, 2, 3}) {
        const KOVAMGR_READ_CALLBACK callbacks[] = {OnRead<1>, OnRead<2>, OnRead<3>};
        const KOVAMGR_READ_CALLBACK cb = callbacks[n - 1];
        m_Recorder.During("read " + std::to_string(n), [this, cb] {
            Remove(cb);
            Register(1, cb);
        });
    }
    const Lines told = ToldBySweepOf("a");
    EXPECT_LE(told.size(), 6u);
    for (const char* line : {"read 1: a", "read 2: a", "read 3: a"}) {
        EXPECT_NE(std::find(told.begin(), told.end(), line), told.end()) << line;
    }
}

TEST_F(ReadCallbackWalk, APortClosedByItsCallbackIsStillWalkedAndNotReadAgain) {
    m_Recorder.During("read 1", [this] { EXPECT_EQ(m_Manager.Close(1), KOVAMGR_OK); });
    EXPECT_EQ(ToldBySweepOf("a"), (Lines{"read 1: a", "read 2: a", "read 3: a"}));
    const long reads = m_Fake->Calls(FakeCall::kRead);
    Sweep();
    EXPECT_EQ(m_Fake->Calls(FakeCall::kRead), reads);
}

TEST_F(ReadCallbackWalk, APortOpenedByACallbackBehindItIsReadInTheSameSweep) {
    Register(2, OnRead<4>);
    m_Fake->PushData("COM2", "b");
    m_Recorder.During("read 3", [this] { Open(2); });
    EXPECT_EQ(ToldBySweepOf("a"), (Lines{"read 1: a", "read 2: a", "read 3: a", "read 4: b"}));
}

TEST_F(ReadCallbackWalk, EndsWhenThePortGoesDuringACallbackAndAnotherTakesItsPlace) {
    LoadAnotherDevice();
    m_Recorder.During("read 1", [this] { PullOut(FakeDevices().Device("Scale").Port("COM3")); });
    EXPECT_EQ(ToldBySweepOf("a"), (Lines{"read 1: a"}));
    EXPECT_EQ(PortLines(), (Lines{"COM3 = 3"}));
}

TEST_F(ReadCallbackWalk, EndsWhenTheLastPortGoesDuringACallback) {
    m_Recorder.During("read 1", [this] { PullOut(FakeDevices()); });
    EXPECT_EQ(ToldBySweepOf("a"), (Lines{"read 1: a"}));
    EXPECT_EQ(PortLines(), Lines());
}
