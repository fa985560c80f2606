// SPDX-License-Identifier: MIT
#include "tests/proof/soak/host.h"

#include <array>
#include <atomic>
#include <cstdlib>
#include <string>
#include <utility>

#include "tests/harness/wait_until.h"
#include "tests/proof/soak/call_watch.h"
#include "tests/proof/soak/verdict.h"

namespace {

std::array<host::StayPort, kStays> g_Stays;
std::atomic<long> g_Insertions{0};
std::atomic<long> g_PullOuts{0};

template <std::size_t port> void Receive(void* data, int length) {
    NumberedBytes& expected = g_Stays[port].received;
    const auto count = static_cast<std::size_t>(length);
    const uint64_t first = expected.Position();
    const std::size_t right = expected.Take(static_cast<const char*>(data), count);
    verdict::Expect(right == count, "port " + std::to_string(port) + ": byte " +
                                        std::to_string(first + right) + " to the host is wrong");
}

template <std::size_t... port>
constexpr std::array<KOVAMGR_READ_CALLBACK, kStays> Receivers(std::index_sequence<port...>) {
    return {Receive<port>...};
}

constexpr auto kReceivers = Receivers(std::make_index_sequence<kStays>());

void CountNotice(_KOVAMGR_DEV_STATE_TYPE_ state) {
    ++(state == KOVAMGR_DEVICE_INSERT ? g_Insertions : g_PullOuts);
}

std::size_t NumberOf(const _KOVAMGR_DEVICEINFO& device) {
    return static_cast<std::size_t>(std::atoi(device.szDeviceName));
}

void OpenStay(std::size_t port, int id) {
    g_Stays[port].id = id;
    verdict::Expect(KOVAMGR_RegisterCommDataReadCallback(kReceivers[port], id) == KOVAMGR_OK,
                    "a read callback is refused");
    const bool isOpen = WaitUntil([id] { return KOVAMGR_Open(id) == KOVAMGR_OK; });
    verdict::Expect(isOpen, "a port that stays does not open");
}

} // namespace

namespace host {

StayPort& Stay(std::size_t port) { return g_Stays[port]; }

void Start() {
    verdict::Expect(KOVAMGR_RegisterDeviceStateProcessCallback(CountNotice) == KOVAMGR_OK,
                    "the callback for notices is refused");
    const auto list = Enumerate();
    verdict::Expect(list->nDeviceCount == kDevices, "the devices are not all there");
    for (std::size_t i = 0; i < kStays; ++i) {
        OpenStay(NumberOf(list->stDevice[i]), list->stDevice[i].stPort[0].nPortID);
    }
}

void Send(std::size_t port, std::size_t count) {
    StayPort& stay = g_Stays[port];
    char bytes[512];
    for (int tries = 0; count > 0 && tries < 1000; ++tries) {
        stay.sent.Peek(bytes, count);
        long reason = 0;
        const int taken =
            KOVASMGR_WATCHED(KOVAMGR_Write, stay.id, bytes, static_cast<long>(count), 0, &reason);
        const bool hasFailed = taken == -1 && reason == KOVAMGR_ERR_OSADAPT;
        verdict::Expect(hasFailed || (taken >= 0 && taken <= static_cast<int>(count)),
                        "a write returns " + std::to_string(taken));
        const std::size_t advance = taken > 0 ? static_cast<std::size_t>(taken) : 0;
        stay.sent.Advance(advance);
        count -= advance;
    }
    verdict::Expect(count == 0, "port " + std::to_string(port) + " takes nothing any more");
}

std::unique_ptr<_KOVAMGR_DEVICEINFOLIST> Enumerate() {
    auto list = std::make_unique<_KOVAMGR_DEVICEINFOLIST>();
    const int result = KOVASMGR_WATCHED(KOVAMGR_EnumeratePortInfo, list.get());
    verdict::Expect(result == KOVAMGR_OK, "the enumeration is refused");
    return list;
}

void CheckStays(const _KOVAMGR_DEVICEINFOLIST& list) {
    verdict::Expect(list.nDeviceCount >= kStays && list.nDeviceCount <= kDevices,
                    "a list has " + std::to_string(list.nDeviceCount) + " devices");
    std::size_t found = 0;
    for (std::size_t i = 0; i < list.nDeviceCount; ++i) {
        const _KOVAMGR_DEVICEINFO& device = list.stDevice[i];
        const std::size_t number = NumberOf(device);
        if (number < kStays && device.nPortCount == 1) {
            found += device.stPort[0].nPortID == g_Stays[number].id ? 1 : 0;
        }
    }
    verdict::Expect(found == kStays, "a port that stays has gone or has another identifier");
}

void CloseComesAndGoes() {
    const auto list = Enumerate();
    for (std::size_t i = 0; i < list->nDeviceCount; ++i) {
        const int id = list->stDevice[i].stPort[0].nPortID;
        if (NumberOf(list->stDevice[i]) >= kStays) {
            verdict::Expect(WaitUntil([id] { return KOVAMGR_Close(id) == KOVAMGR_OK; }),
                            "a port does not close");
        }
    }
}

long Insertions() { return g_Insertions; }
long PullOuts() { return g_PullOuts; }

void Ignore(void*, int) {}
void IgnoreNotice(_KOVAMGR_DEV_STATE_TYPE_) {}

} // namespace host
