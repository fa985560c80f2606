// SPDX-License-Identifier: MIT
#ifndef KOVASMGR_TESTS_PROOF_UNPLUG_TERMINAL_MATRIX_H
#define KOVASMGR_TESTS_PROOF_UNPLUG_TERMINAL_MATRIX_H

#include <chrono>
#include <memory>
#include <random>
#include <string>

#include "tests/adapters/control_client.h"
#include "tests/adapters/far_program.h"
#include "tests/adapters/virtual_bench.h"
#include "tests/proof/unplug/cell.h"
#include "tests/proof/unplug/start_line.h"
#include "tests/proof/unplug/terminals.h"

/// One cell on real terminals: device "mine" with the port "mine-0" stays, "other" with "other-0"
/// and "other-1" is pulled out, or its first port is. Far ends are programs that have opened the
/// terminals.
class TerminalMatrix : public VirtualBench, public testing::WithParamInterface<Cell> {
  protected:
    TerminalMatrix();
    ~TerminalMatrix() override;

    // Steps of a round.

    /// Initialises, and takes the neighbour's port in use.
    void Start();

    /// Uses the ports that are to go, as the operation needs them.
    void Use();

    /// Operation and pull-out, at random moments within those of the cell.
    void Collide();

    void PullOut();

    /// Plugs in again what was pulled out.
    void PlugIn();

    /// Closes the far ends, and the connection by which devices are pulled out.
    void Disconnect();

    /// Whether the operation ended as it may, with the port there or not.
    bool EndedWell() const;

    /// Whether it came before the pull-out: it has found the port there, or, where its result does
    /// not tell, had ended before the host was told.
    bool CameFirst() const;

    const Cell& m_Cell = GetParam();
    int m_Mine = -1;
    int m_Other = -1;
    int m_Result = 0;    // of the operation
    std::string m_Reply; // to the pull-out
    std::unique_ptr<FarProgram> m_Far;
    std::unique_ptr<FarProgram> m_MineFar;

  private:
    StartLine::Time Random(StartLine::Time from, StartLine::Time to);
    StartLine::Time HostDelay();
    void CollideWithDelivery();
    void Operate();
    std::string CommandFor(const char* device, const char* port) const;
    PortsOfDevices DevicesWithout() const;

    std::mt19937 m_Random;
    StartLine::Time m_PullTime{10000}; // how long a pull-out takes until the host was told
    std::unique_ptr<ControlClient> m_Client;
    int m_PullOutsBefore = 0;
    bool m_WasTold = false;   // when the operation had ended
    PortsOfDevices m_Devices; // as it has found them
};

#endif
