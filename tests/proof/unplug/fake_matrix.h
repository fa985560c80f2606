// SPDX-License-Identifier: MIT
#ifndef KOVASMGR_TESTS_PROOF_UNPLUG_FAKE_MATRIX_H
#define KOVASMGR_TESTS_PROOF_UNPLUG_FAKE_MATRIX_H

#include <memory>

#include "tests/api/host_test.h"
#include "tests/harness/capture_stdout.h"
#include "tests/proof/unplug/bounded_thread.h"
#include "tests/proof/unplug/cell.h"
#include "tests/proof/unplug/gate.h"

/// One cell on the scripted adapter: "Modem" has COM1 = 1, with which the host works, and COM2 = 2;
/// "Reader" has COM3 = 3 and stays. All are open but what is about to be opened. COM1 is pulled out,
/// alone or with its device.
class FakeMatrix : public HostTest, public testing::WithParamInterface<Cell> {
  protected:
    FakeMatrix();

    /// Initialises, opens, registers.
    void Attach();

    /// The operation and the pull-out, in the order of the cell.
    void Run();

    // What is left to see afterwards.

    int Result() const { return m_Result; }
    Lines SnapshotOfDevices() const { return m_Devices; }
    int Told(const std::string& line) const;

    const Cell& m_Cell = GetParam();

  private:
    void RunUnderWay();
    void RunDuring();

    void Operate();
    void StartUnderWay();
    void Park(FakeCall call);
    void CarryInReadCallback();
    void CarryInNotice();
    bool IsStateOperation() const;
    bool Waits() const;
    void PullOut();
    void ExpectRest(const BoundedThread& waiting);
    void FinishSweep();

    CaptureStdout m_Output;
    Gate m_Gate;
    std::unique_ptr<BoundedThread> m_Host;   // runs the operation
    std::unique_ptr<BoundedThread> m_Notice; // runs the pull-out
    int m_Result = 0;
    Lines m_Devices;
};

#endif
