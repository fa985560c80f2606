// SPDX-License-Identifier: MIT
#include "tests/proof/unplug/fake_matrix.h"

#include <algorithm>

#include "KOVASMgrLog.h"
#include "tests/proof/unplug/host_operation.h"
#include "tests/proof/unplug/processor_time.h"

FakeMatrix::FakeMatrix() { KOVASMGR_LOG_INIT(m_Scratch.LogDirectory().c_str()); }

void FakeMatrix::Attach() {
    InitWith(FakeDevices().Device("Modem").Port("COM1").Port("COM2").Device("Reader").Port("COM3"));
    ASSERT_EQ(KOVAMGR_RegisterDeviceStateProcessCallback(OnState<1>), KOVAMGR_OK);
    if (m_Cell.operation == Operation::kUnRegisterState) {
        ASSERT_EQ(KOVAMGR_RegisterDeviceStateProcessCallback(OnState<2>), KOVAMGR_OK);
    }
    ASSERT_EQ(KOVAMGR_RegisterCommDataReadCallback(OnRead<1>, 1), KOVAMGR_OK);
    ASSERT_EQ(KOVAMGR_RegisterCommDataReadCallback(OnRead<3>, 3), KOVAMGR_OK);
    for (int port = m_Cell.operation == Operation::kOpen ? 2 : 1; port <= 3; ++port) {
        ASSERT_EQ(KOVAMGR_Open(port), KOVAMGR_OK);
    }
    m_Fake->KeepNotifyingAfterUnRegister(true);
}

void FakeMatrix::Run() {
    switch (m_Cell.moment) {
    case Moment::kBefore:
        m_Host = std::make_unique<BoundedThread>("the operation", [this] { Operate(); });
        m_Host->Join();
        PullOut();
        break;
    case Moment::kAfter:
        PullOut();
        m_Notice->Join();
        m_Host = std::make_unique<BoundedThread>("the operation", [this] { Operate(); });
        break;
    case Moment::kUnderWay:
        RunUnderWay();
        break;
    case Moment::kDuringRescan:
    case Moment::kDuringCallback:
        RunDuring();
        break;
    }
    m_Host->Join();
    m_Notice->Join();
    FinishSweep();
}

// The notice comes while the operation is under way: it waits for it.
void FakeMatrix::RunUnderWay() {
    StartUnderWay();
    ASSERT_TRUE(m_Gate.WaitForArrival());
    PullOut();
    ExpectRest(*m_Notice);
    EXPECT_EQ(Told("state 1: 20201"), 0);
    m_Gate.Open();
}

// The operation comes while the notice is under way: it waits for it, or has nothing to wait for.
void FakeMatrix::RunDuring() {
    if (m_Cell.moment == Moment::kDuringRescan) {
        Park(FakeCall::kEnum);
    } else {
        m_Recorder.During("state 1", [this] { m_Gate.Pass(); });
    }
    PullOut();
    ASSERT_TRUE(m_Gate.WaitForArrival());
    m_Host = std::make_unique<BoundedThread>("the operation", [this] { Operate(); });
    if (Waits()) {
        ExpectRest(*m_Host);
    } else {
        m_Host->Join();
    }
    m_Gate.Open();
}

void FakeMatrix::StartUnderWay() {
    switch (m_Cell.operation) {
    case Operation::kOpen:
        Park(FakeCall::kOpen);
        break;
    case Operation::kWrite:
        Park(FakeCall::kWrite);
        break;
    case Operation::kClose:
    case Operation::kRelease:
        Park(FakeCall::kClose);
        break;
    case Operation::kReceive:
        m_Recorder.During("read 1", [this] { m_Gate.Pass(); });
        break;
    case Operation::kRegisterState:
    case Operation::kUnRegisterState:
        CarryInNotice();
        return;
    default:
        CarryInReadCallback();
        return;
    }
    m_Host = std::make_unique<BoundedThread>("the operation", [this] { Operate(); });
}

void FakeMatrix::Park(FakeCall call) {
    m_Fake->SetHook(call, [this] { m_Gate.Pass(); });
}

// An operation that calls no adapter is kept inside by the read callback that it is called from.
void FakeMatrix::CarryInReadCallback() {
    m_Recorder.During("read 1", [this] {
        m_Gate.Pass();
        Operate();
    });
    m_Host = std::make_unique<BoundedThread>("the data", [this] { m_Fake->PushData("COM1", "a"); });
}

// The same for what has to do with notices: by the callback of another notice.
void FakeMatrix::CarryInNotice() {
    m_Recorder.During("state 1", [this] {
        if (Told("state 1: 20205") == 1 && Told("state 1: 20201") == 0) {
            m_Gate.Pass();
            Operate();
        }
    });
    m_Host = std::make_unique<BoundedThread>("the first notice", [this] { m_Fake->Notify(5); });
}

void FakeMatrix::Operate() {
    if (m_Cell.operation == Operation::kReceive) {
        m_Fake->PushData("COM1", "data");
        m_Result = !m_Cell.HasPort() || WaitUntil([this] { return Told("read 1: data") == 1; });
    } else if (m_Cell.operation == Operation::kEnumerate) {
        m_Devices = Devices();
    } else {
        m_Result = Perform(m_Cell.operation, {1, OnRead<1>, OnRead<2>, OnState<2>});
    }
}

bool FakeMatrix::IsStateOperation() const {
    return m_Cell.operation == Operation::kRegisterState ||
           m_Cell.operation == Operation::kUnRegisterState;
}

// A rescan holds the lock of the ports, a callback that of the device-state callbacks.
bool FakeMatrix::Waits() const {
    if (m_Cell.operation == Operation::kReceive) {
        return false; // the read thread does
    }
    const bool isRescan = m_Cell.moment == Moment::kDuringRescan;
    return m_Cell.operation == Operation::kRelease || IsStateOperation() != isRescan;
}

void FakeMatrix::PullOut() {
    FakeDevices devices;
    if (m_Cell.gone == Gone::kPort) {
        devices.Device("Modem").Port("COM2");
    }
    devices.Device("Reader").Port("COM3").Apply(*m_Fake);
    m_Notice = std::make_unique<BoundedThread>("the notice", [this] { m_Fake->Notify(1); });
}

// Nothing runs but the read thread, where it can.
void FakeMatrix::ExpectRest(const BoundedThread& waiting) {
    EXPECT_TRUE(waiting.WaitUntilAsleep()) << "it does not wait";
    EXPECT_TRUE(IsIdle());
    EXPECT_FALSE(waiting.HasEnded()) << "it does not wait";
}

// Two sweeps from now whatever the read thread was doing is over.
void FakeMatrix::FinishSweep() {
    if (KOVAMGR_GetPortState(3) != KOVAMGR_PORT_STATE_READY) {
        return;
    }
    const long reads = m_Fake->Calls(FakeCall::kRead);
    EXPECT_TRUE(WaitUntil([&] { return m_Fake->Calls(FakeCall::kRead) >= reads + 4; }));
}

int FakeMatrix::Told(const std::string& line) const {
    const Lines told = m_Recorder.Told();
    return static_cast<int>(std::count(told.begin(), told.end(), line));
}
