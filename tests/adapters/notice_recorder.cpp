// SPDX-License-Identifier: MIT
#include "tests/adapters/notice_recorder.h"

#include "tests/harness/wait_until.h"

namespace {

std::atomic<NoticeRecorder*> s_Recorder{nullptr};

} // namespace

NoticeRecorder::NoticeRecorder(const AdapterUnderTest& adapter) : m_Adapter(adapter) {
    s_Recorder = this;
}

NoticeRecorder::~NoticeRecorder() { s_Recorder = nullptr; }

void NoticeRecorder::OnNotice(_OS_ADAPT_DEVICESTATUS_TYPE status) {
    if (NoticeRecorder* const recorder = s_Recorder) {
        recorder->Record(status);
    }
}

std::vector<std::string> NoticeRecorder::Notices() const {
    const std::lock_guard<std::mutex> lock(m_Mutex);
    return m_Notices;
}

bool NoticeRecorder::WaitForCount(size_t count) const {
    return WaitUntil([&] { return Notices().size() >= count; });
}

bool NoticeRecorder::WaitUntilInside() const {
    return WaitUntil([&] { return m_Inside.load(); });
}

void NoticeRecorder::Record(_OS_ADAPT_DEVICESTATUS_TYPE status) {
    m_Inside = true;
    const char* const sign = status == OS_ADAPT_DEVICE_PULLOUT ? "- " : "+ ";
    const std::string text = sign + m_Adapter.DevicesText();
    WaitUntil([&] { return !m_Blocked; }, std::chrono::seconds(30));
    const std::string again = sign + m_Adapter.DevicesText();
    {
        const std::lock_guard<std::mutex> lock(m_Mutex);
        m_Notices.push_back(text == again ? text : text + " changed to " + again);
    }
    if (m_Action) {
        m_Action();
    }
    m_Inside = false;
}
