// SPDX-License-Identifier: MIT
#include "tools/kovasctl/conformance/timed.h"

#include <cstdio>
#include <memory>
#include <thread>
#include <utility>

bool EndsWithin(double seconds, std::function<void()> function) {
    const auto end = std::make_shared<Gate>();
    std::thread([end, body = std::move(function)] {
        body();
        end->Open();
    }).detach();
    return end->Wait(seconds);
}

void RunOnThread(const std::function<void()>& function) { std::thread(function).join(); }

bool HoldsWithin(double seconds, const std::function<bool()>& condition) {
    constexpr std::chrono::milliseconds kPause{2};
    const Stopwatch watch;
    while (!condition()) {
        if (watch.Seconds() >= seconds) {
            return false;
        }
        std::this_thread::sleep_for(kPause);
    }
    return true;
}

void Gate::Open() {
    const std::lock_guard<std::mutex> lock(m_Mutex);
    m_IsOpen = true;
    m_Changed.notify_all();
}

bool Gate::Wait(double seconds) {
    std::unique_lock<std::mutex> lock(m_Mutex);
    return m_Changed.wait_for(lock, std::chrono::duration<double>(seconds),
                              [&] { return m_IsOpen; });
}

std::string DurationText(double seconds) {
    char text[32];
    if (seconds < 1) {
        std::snprintf(text, sizeof text, "%.1f ms", seconds * 1000);
    } else {
        std::snprintf(text, sizeof text, "%.2f s", seconds);
    }
    return text;
}
