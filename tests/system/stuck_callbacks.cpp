// SPDX-License-Identifier: MIT
#include "tests/system/stuck_callbacks.h"

#include <pthread.h>
#include <unistd.h>

#include <atomic>
#include <mutex>
#include <thread>

#include "tests/harness/wait_until.h"

namespace {

std::atomic<bool> s_IsInside{false};
std::atomic<bool> s_MustStay{true};
std::atomic<bool> s_IsHeld{false};
std::mutex s_Mutex;
std::thread s_Holder;

} // namespace

void BlockInRead(void*, int) {
    int ends[2] = {-1, -1};
    if (pipe(ends) != 0) {
        return;
    }
    s_IsInside = true;
    char byte = 0;
    while (read(ends[0], &byte, 1) != 0) {
    }
}

void BlockOnCondition(void*, int) {
    // Static and of the C interface: a thread that is cancelled leaves nothing to be destroyed.
    static pthread_mutex_t mutex = PTHREAD_MUTEX_INITIALIZER;
    static pthread_cond_t never = PTHREAD_COND_INITIALIZER;
    s_IsInside = true;
    pthread_mutex_lock(&mutex);
    pthread_cleanup_push(
        [](void* held) { pthread_mutex_unlock(static_cast<pthread_mutex_t*>(held)); }, &mutex);
    for (;;) {
        pthread_cond_wait(&never, &mutex);
    }
    pthread_cleanup_pop(1);
}

void Spin(void*, int) {
    s_IsInside = true;
    while (s_MustStay) {
    }
}

void WaitForMutex(void*, int) {
    s_IsInside = true;
    std::lock_guard<std::mutex> lock(s_Mutex);
}

// On a thread of its own, which takes no other lock meanwhile.
void HoldMutex() {
    s_Holder = std::thread([] {
        std::lock_guard<std::mutex> lock(s_Mutex);
        s_IsHeld = true;
        WaitUntil([] { return !s_MustStay; }, std::chrono::minutes(1));
    });
    WaitUntil([] { return s_IsHeld.load(); });
}

void LetGo() {
    s_MustStay = false;
    if (s_Holder.joinable()) {
        s_Holder.join();
    }
}

bool WaitUntilStuck() {
    return WaitUntil([] { return s_IsInside.load(); });
}
