// SPDX-License-Identifier: MIT
#ifndef KOVASMGR_TESTS_FAKES_BLOCKS_H
#define KOVASMGR_TESTS_FAKES_BLOCKS_H

#include <array>
#include <atomic>
#include <mutex>

#include "tests/fakes/fake_adapter.h"

/// Where calls hang until Unblock. No lock of the fake is held meanwhile, and a call that is
/// cancelled in here is counted out by its unwinding.
class Blocks {
  public:
    void Block(FakeCall call, FakeBlock how);
    void Unblock();
    int Blocked() const { return m_Blocked; }

    /// Hangs if the call is to be blocked.
    void Pass(FakeCall call);

  private:
    void ReadPipe();

    std::array<std::atomic<FakeBlock>, kFakeCalls> m_How{};
    std::atomic<int> m_Blocked{0};
    std::atomic<bool> m_IsSpinning{false};
    std::mutex m_Barrier;
    bool m_IsBarrierHeld = false;
    std::atomic<int> m_ReadEnd{-1};
    int m_WriteEnd = -1;
};

#endif
