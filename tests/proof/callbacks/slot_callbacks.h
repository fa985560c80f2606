// SPDX-License-Identifier: MIT
#ifndef KOVASMGR_TESTS_PROOF_CALLBACKS_SLOT_CALLBACKS_H
#define KOVASMGR_TESTS_PROOF_CALLBACKS_SLOT_CALLBACKS_H

#include <array>
#include <cstddef>
#include <functional>
#include <utility>
#include <vector>

#include "KOVASMgr.h"
#include "tests/proof/callbacks/disturbance.h"
#include "tests/proof/callbacks/slot.h"

/// The slots behind plain callbacks, and what those do besides. One per process.
struct SlotTable {
    static constexpr std::size_t kPorts = 64;
    static constexpr std::size_t kCallbacksEach = 4;

    std::vector<Slot> slots;
    std::function<void(std::size_t slot)> during; ///< in each call; set before any

    static SlotTable& Get() {
        static SlotTable table;
        return table;
    }

    static void Call(std::size_t slot) {
        const Visit visit(Get().slots[slot]);
        Disturbance::Yield();
        if (Get().during) {
            Get().during(slot);
        }
    }
};

/// The nth read callback, of four, of the port that the first byte names, 0 to 63.
template <std::size_t n> void OnSlotData(void* data, int /*length*/) {
    SlotTable::Call(*static_cast<const unsigned char*>(data) * SlotTable::kCallbacksEach + n);
}

/// Two read callbacks of any port, whose slot has the port's number.
inline void OnPortData(void* data, int /*length*/) {
    SlotTable::Call(*static_cast<const unsigned char*>(data));
}
inline void OnPortDataToo(void* data, int length) { OnPortData(data, length); }

template <std::size_t n> void OnSlotNotice(_KOVAMGR_DEV_STATE_TYPE_ /*state*/) {
    SlotTable::Call(n);
}

template <std::size_t... n>
constexpr std::array<KOVAMGR_READ_CALLBACK, sizeof...(n)>
SlotDataCallbacks(std::index_sequence<n...> /*numbers*/) {
    return {OnSlotData<n>...};
}

template <std::size_t... n>
constexpr std::array<KOVAMGR_DEV_STATE_CALLBACK, sizeof...(n)>
SlotNoticeCallbacks(std::index_sequence<n...> /*numbers*/) {
    return {OnSlotNotice<n>...};
}

#endif
