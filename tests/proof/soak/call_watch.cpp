// SPDX-License-Identifier: MIT
#include "tests/proof/soak/call_watch.h"

#include <atomic>
#include <chrono>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <mutex>
#include <thread>

#include "tests/harness/wait_until.h"

namespace {

using Clock = std::chrono::steady_clock;

constexpr auto kHangs = std::chrono::minutes(1);

struct Slot {
    std::atomic<const char*> name{nullptr}; // null: no call
    std::atomic<Clock::rep> since{0};
};

Slot g_Slots[64];
std::atomic<std::size_t> g_SlotsTaken{0};
std::mutex g_LongestMutex; // guards the two that follow
Clock::duration g_Longest{};
const char* g_LongestCall = "none";

std::size_t OwnSlot() {
    thread_local const std::size_t slot = g_SlotsTaken++;
    return slot;
}

Clock::duration Age(const Slot& slot) {
    return Clock::now().time_since_epoch() - Clock::duration(slot.since);
}

bool DoesOneHang() {
    for (const Slot& slot : g_Slots) {
        const char* const name = slot.name;
        if (name != nullptr && Age(slot) > kHangs) {
            std::fprintf(stderr, "soak: %s does not come back\n", name);
            return true;
        }
    }
    return false;
}

} // namespace

namespace call_watch {

void Start() {
    std::thread([] {
        WaitUntil(DoesOneHang, std::chrono::hours(24));
        std::abort();
    }).detach();
}

double LongestMs() {
    const std::lock_guard<std::mutex> lock(g_LongestMutex);
    return std::chrono::duration<double, std::milli>(g_Longest).count();
}

const char* LongestCall() {
    const std::lock_guard<std::mutex> lock(g_LongestMutex);
    return g_LongestCall;
}

Call::Call(const char* name) : m_Slot(OwnSlot()) {
    g_Slots[m_Slot].since = Clock::now().time_since_epoch().count();
    g_Slots[m_Slot].name = name;
}

Call::~Call() {
    Slot& slot = g_Slots[m_Slot];
    const auto took = Age(slot);
    const char* const name = slot.name.exchange(nullptr);
    const std::lock_guard<std::mutex> lock(g_LongestMutex);
    if (took > g_Longest) {
        g_Longest = took;
        g_LongestCall = name;
    }
}

} // namespace call_watch
