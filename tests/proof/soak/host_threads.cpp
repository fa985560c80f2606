// SPDX-License-Identifier: MIT
#include "tests/proof/soak/host_threads.h"

#include <initializer_list>
#include <random>
#include <string>

#include "tests/proof/soak/call_watch.h"
#include "tests/proof/soak/host.h"
#include "tests/proof/soak/verdict.h"

namespace {

using std::chrono::milliseconds;

constexpr std::size_t kWriters = 8;
constexpr std::size_t kOpeners = 3;
constexpr std::size_t kRegistrars = 3;
constexpr std::size_t kEnumerators = 2;
static_assert(kWriters + kOpeners + kRegistrars + kEnumerators == kHostThreads);

void ExpectOneOf(std::initializer_list<int> allowed, int result, const char* function) {
    for (const int code : allowed) {
        if (result == code) {
            return;
        }
    }
    verdict::Wrong(std::string(function) + " returns " + std::to_string(result));
}

std::size_t Below(std::minstd_rand& random, std::size_t bound) { return random() % bound; }

void Write(std::size_t writer, std::minstd_rand& random) {
    constexpr std::size_t kEach = kStays / kWriters;
    host::Send(writer * kEach + Below(random, kEach), 1 + Below(random, 512));
}

// The port may go at any moment; then each call says so in its own way.
void UseComingAndGoing(int id, std::minstd_rand& random) {
    long reason = 0;
    switch (Below(random, 4)) {
    case 0:
        ExpectOneOf({KOVAMGR_OK, KOVAMGR_ERR_PARAM},
                    KOVASMGR_WATCHED(KOVAMGR_RegisterCommDataReadCallback, host::Ignore, id),
                    "registering");
        break;
    case 1:
        ExpectOneOf({KOVAMGR_OK, KOVAMGR_ERR_PARAM, KOVAMGR_ERR_OSADAPT},
                    KOVASMGR_WATCHED(KOVAMGR_Open, id), "opening");
        break;
    case 2:
        ExpectOneOf({0, 1, 2, -1, KOVAMGR_ERR_NO_HANDLE},
                    KOVASMGR_WATCHED(KOVAMGR_Write, id, "ab", 2, 0, &reason), "writing");
        break;
    default:
        ExpectOneOf({KOVAMGR_OK, KOVAMGR_ERR_OSADAPT}, KOVASMGR_WATCHED(KOVAMGR_Close, id),
                    "closing");
    }
}

void OpenAndClose(std::size_t, std::minstd_rand& random) {
    const auto list = host::Enumerate();
    const std::size_t device = Below(random, list->nDeviceCount);
    const int id = list->stDevice[device].stPort[0].nPortID;
    if (list->stDevice[device].szDeviceText[0] == 'c') {
        UseComingAndGoing(id, random);
    }
}

void Register(std::size_t, std::minstd_rand& random) {
    const int id = host::Stay(Below(random, kStays)).id;
    ExpectOneOf({KOVAMGR_OK},
                KOVASMGR_WATCHED(KOVAMGR_RegisterCommDataReadCallback, host::Ignore, id),
                "registering");
    ExpectOneOf({KOVAMGR_OK},
                KOVASMGR_WATCHED(KOVAMGR_UnRegisterCommDataReadCallback, host::Ignore, id),
                "un-registering");
    ExpectOneOf({KOVAMGR_OK},
                KOVASMGR_WATCHED(KOVAMGR_RegisterDeviceStateProcessCallback, host::IgnoreNotice),
                "registering for notices");
    ExpectOneOf({KOVAMGR_OK},
                KOVASMGR_WATCHED(KOVAMGR_UnRegisterDeviceStateProcessCallback, host::IgnoreNotice),
                "un-registering from notices");
    ExpectOneOf({KOVAMGR_PORT_STATE_READY}, KOVASMGR_WATCHED(KOVAMGR_GetPortState, id),
                "the state");
}

void LookAtList(std::size_t, std::minstd_rand&) { host::CheckStays(*host::Enumerate()); }

template <typename Step>
void AddThreads(Stage& stage, std::size_t count, milliseconds pace, Step step) {
    for (std::size_t i = 0; i < count; ++i) {
        stage.Add([&stage, i, pace, step] {
            std::minstd_rand random(static_cast<unsigned>(1 + i));
            while (stage.Next(pace)) {
                step(i, random);
            }
        });
    }
}

} // namespace

void AddHostThreads(Stage& stage) {
    AddThreads(stage, kWriters, milliseconds(2), Write);
    AddThreads(stage, kOpeners, milliseconds(3), OpenAndClose);
    AddThreads(stage, kRegistrars, milliseconds(5), Register);
    AddThreads(stage, kEnumerators, milliseconds(10), LookAtList);
}
