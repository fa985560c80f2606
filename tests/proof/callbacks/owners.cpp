// SPDX-License-Identifier: MIT
#include "tests/proof/callbacks/owners.h"

#include <thread>
#include <utility>

#include "tests/harness/wait_until.h"
#include "tests/proof/callbacks/disturbance.h"

Owners::Owners(std::vector<Slot>& slots, Step begin, Step end)
    : m_Slots(slots), m_Begin(std::move(begin)), m_End(std::move(end)) {}

long Owners::Run(std::size_t threads, long rounds) {
    std::vector<std::thread> owners;
    const std::size_t each = m_Slots.size() / threads;
    for (std::size_t i = 0; i < threads; ++i) {
        owners.emplace_back([this, i, each] { Own(i * each, each); });
    }
    WaitUntil([&] { return m_Rounds >= rounds; }, std::chrono::minutes(2));
    m_IsOver = true;
    for (std::thread& owner : owners) {
        owner.join();
    }
    return m_Rounds;
}

void Owners::Own(std::size_t first, std::size_t count) {
    std::vector<bool> isInUse(count, false);
    while (!m_IsOver) {
        const std::size_t i = Disturbance::Below(static_cast<uint32_t>(count));
        isInUse[i] = Turn(first + i, isInUse[i]);
        Disturbance::Yield();
    }
    for (std::size_t i = 0; i < count; ++i) {
        if (isInUse[i]) {
            GiveUp(first + i);
        }
    }
}

// Mostly waits for a call, so that there is something to end.
bool Owners::Turn(std::size_t slot, bool isInUse) {
    if (!isInUse) {
        m_Slots[slot].TakeInUse();
        m_Begin(slot);
        return true;
    }
    if (m_Slots[slot].Calls() == 0 && Disturbance::Below(1000) != 0) {
        return true;
    }
    GiveUp(slot);
    return false;
}

void Owners::GiveUp(std::size_t slot) {
    m_End(slot);
    m_Rounds += m_Slots[slot].Calls() > 0 ? 1 : 0;
    m_Slots[slot].GiveUp();
}

long Owners::Late() const {
    long late = 0;
    for (const Slot& slot : m_Slots) {
        late += slot.Late();
    }
    return late;
}
