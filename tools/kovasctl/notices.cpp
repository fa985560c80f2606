// SPDX-License-Identifier: MIT
#include "tools/kovasctl/notices.h"

#include <exception>
#include <utility>

#include "KOVASMgr.h"
#include "tools/kovasctl/failure.h"
#include "tools/kovasctl/result_code.h"

namespace {

// While nobody fetches, the oldest are dropped; what changed shows in the later ones as well.
constexpr size_t kMost = 1000;

} // namespace

Notices* Notices::s_Active = nullptr;

Notices::Notices() {
    s_Active = this;
    const int result = KOVAMGR_RegisterDeviceStateProcessCallback(OnNotice);
    if (result != KOVAMGR_OK) {
        throw Failure("devices cannot be watched: " + ResultCodeText(result));
    }
    Append(); // after the registration, so that nothing falls in between
}

Notices::~Notices() { KOVAMGR_UnRegisterDeviceStateProcessCallback(OnNotice); }

// Exceptions must not leave a callback. Without memory the notice is missed, and the next one shows
// what has changed.
void Notices::OnNotice(_KOVAMGR_DEV_STATE_TYPE_ /*state*/) {
    try {
        s_Active->Append();
    } catch (const std::exception&) {
    }
}

void Notices::Append() {
    const std::lock_guard<std::mutex> order(m_Order);
    Notice notice{std::chrono::system_clock::now(), TakeSnapshot()};
    const std::lock_guard<std::mutex> lock(m_Mutex);
    m_Queue.push_back(std::move(notice));
    if (m_Queue.size() > kMost) {
        m_Queue.pop_front();
    }
    m_Wakeup.Set();
}

std::deque<Notices::Notice> Notices::Take() {
    const std::lock_guard<std::mutex> lock(m_Mutex);
    m_Wakeup.Clear();
    return std::exchange(m_Queue, {});
}
