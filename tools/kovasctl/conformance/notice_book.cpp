// SPDX-License-Identifier: MIT
#include "tools/kovasctl/conformance/notice_book.h"

#include <algorithm>
#include <chrono>
#include <utility>

#include "tools/kovasctl/conformance/subject.h"

using Lock = std::unique_lock<std::mutex>;

NoticeBook& NoticeBook::Instance() {
    static auto* book = new NoticeBook; // an adapter may notify until the very end
    return *book;
}

void NoticeBook::OnNotice(_OS_ADAPT_DEVICESTATUS_TYPE status) { Instance().Take(status); }

void NoticeBook::Take(_OS_ADAPT_DEVICESTATUS_TYPE status) {
    Lock lock(m_Mutex);
    const size_t index = m_Notices.size();
    m_Notices.push_back({status, Subject::IsInside(), false});
    const Action action = m_Action;
    m_Changed.notify_all();
    lock.unlock();
    if (action) {
        action(status);
    }
    lock.lock();
    m_Notices[index].hasEnded = true;
    m_Changed.notify_all();
}

void NoticeBook::SetAction(Action action) {
    const Lock lock(m_Mutex);
    m_Action = std::move(action);
}

size_t NoticeBook::Count() const {
    const Lock lock(m_Mutex);
    return m_Notices.size();
}

size_t NoticeBook::CountInside() const {
    const Lock lock(m_Mutex);
    return static_cast<size_t>(std::count_if(m_Notices.begin(), m_Notices.end(),
                                             [](const Notice& notice) { return notice.isInside; }));
}

std::string NoticeBook::Text() const {
    const Lock lock(m_Mutex);
    std::string text;
    for (const Notice& notice : m_Notices) {
        text += text.empty() ? "" : ", ";
        text += notice.status == OS_ADAPT_DEVICE_INSERT    ? "insertion"
                : notice.status == OS_ADAPT_DEVICE_PULLOUT ? "pull-out"
                                                           : "unknown status";
    }
    return text.empty() ? "none" : text;
}

bool NoticeBook::WaitForStart(_OS_ADAPT_DEVICESTATUS_TYPE status, double seconds, size_t from) {
    return WaitFor(status, false, seconds, from);
}

bool NoticeBook::WaitForEnd(_OS_ADAPT_DEVICESTATUS_TYPE status, double seconds, size_t from) {
    return WaitFor(status, true, seconds, from);
}

bool NoticeBook::WaitFor(_OS_ADAPT_DEVICESTATUS_TYPE status, bool isEnd, double seconds,
                         size_t from) {
    Lock lock(m_Mutex);
    return m_Changed.wait_for(lock, std::chrono::duration<double>(seconds), [&] {
        for (size_t n = from; n < m_Notices.size(); ++n) {
            if (m_Notices[n].status == status && (m_Notices[n].hasEnded || !isEnd)) {
                return true;
            }
        }
        return false;
    });
}
