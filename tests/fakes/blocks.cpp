// SPDX-License-Identifier: MIT
#include "tests/fakes/blocks.h"

#include <sched.h>
#include <unistd.h>

namespace {

// Counts a call in and out, also when it is cancelled.
class Counted {
  public:
    explicit Counted(std::atomic<int>& count) : m_Count(count) { ++m_Count; }
    ~Counted() { --m_Count; }
    Counted(const Counted&) = delete;
    Counted& operator=(const Counted&) = delete;

  private:
    std::atomic<int>& m_Count;
};

} // namespace

void Blocks::Block(FakeCall call, FakeBlock how) {
    if (how == FakeBlock::kInRead && m_WriteEnd == -1) {
        int ends[2] = {-1, -1};
        if (pipe(ends) == 0) {
            m_ReadEnd = ends[0];
            m_WriteEnd = ends[1];
        }
    }
    if (how == FakeBlock::kInMutex && !m_IsBarrierHeld) {
        m_Barrier.lock();
        m_IsBarrierHeld = true;
    }
    m_IsSpinning = m_IsSpinning || how == FakeBlock::kInSpin;
    m_How[static_cast<std::size_t>(call)] = how;
}

void Blocks::Unblock() {
    for (auto& how : m_How) {
        how = FakeBlock::kNone;
    }
    m_IsSpinning = false;
    if (m_IsBarrierHeld) {
        m_IsBarrierHeld = false;
        m_Barrier.unlock();
    }
    if (m_WriteEnd != -1) {
        close(m_WriteEnd); // ends every read(2) on the other end
        m_WriteEnd = -1;
        while (m_Blocked != 0) {
            sched_yield();
        }
        close(m_ReadEnd.exchange(-1));
    }
}

void Blocks::Pass(FakeCall call) {
    const FakeBlock how = m_How[static_cast<std::size_t>(call)];
    if (how == FakeBlock::kNone) {
        return;
    }
    Counted counted(m_Blocked);
    switch (how) {
    case FakeBlock::kInRead:
        ReadPipe();
        break;
    case FakeBlock::kInMutex:
        m_Barrier.lock();
        m_Barrier.unlock();
        break;
    case FakeBlock::kInSpin:
        while (m_IsSpinning) {
            sched_yield();
        }
        break;
    case FakeBlock::kNone:
        break;
    }
}

void Blocks::ReadPipe() {
    char byte = 0;
    while (read(m_ReadEnd, &byte, 1) > 0) {
    }
}
