// SPDX-License-Identifier: MIT
#include "tests/real_kernel/guest/notices.h"

#include <mutex>

#include "tests/harness/wait_until.h"

namespace {

std::mutex s_Mutex;
std::vector<notices::Notice> s_Notices;
std::function<void()> s_Action;

std::function<void()> Action() {
    const std::lock_guard<std::mutex> lock(s_Mutex);
    return s_Action;
}

} // namespace

void notices::OnDevices(_KOVAMGR_DEV_STATE_TYPE_ state) {
    const Instant now = std::chrono::steady_clock::now();
    if (const auto action = Action()) {
        action();
    }
    const std::lock_guard<std::mutex> lock(s_Mutex);
    s_Notices.push_back({state == KOVAMGR_DEVICE_INSERT, now});
}

std::vector<notices::Notice> notices::All() {
    const std::lock_guard<std::mutex> lock(s_Mutex);
    return s_Notices;
}

std::string notices::Signs() {
    std::string signs;
    for (const Notice& notice : All()) {
        signs += notice.isInsertion ? '+' : '-';
    }
    return signs;
}

bool notices::WaitForSigns(const std::string& signs) {
    return WaitUntil([&] { return Signs() == signs; });
}

bool notices::TakeSigns(const std::string& signs) {
    const bool came = WaitForSigns(signs);
    Clear();
    return came;
}

void notices::OnEach(std::function<void()> action) {
    const std::lock_guard<std::mutex> lock(s_Mutex);
    s_Action = std::move(action);
}

void notices::Clear() {
    const std::lock_guard<std::mutex> lock(s_Mutex);
    s_Notices.clear();
}
