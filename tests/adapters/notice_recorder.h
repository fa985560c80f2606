// SPDX-License-Identifier: MIT
#ifndef KOVASMGR_TESTS_ADAPTERS_NOTICE_RECORDER_H
#define KOVASMGR_TESTS_ADAPTERS_NOTICE_RECORDER_H

#include <atomic>
#include <functional>
#include <mutex>
#include <string>
#include <vector>

#include "tests/adapters/adapter_under_test.h"

/// Writes down each notice with what an enumeration says inside it: "- left(l0 l1)" for a pull-out,
/// "+ ..." for an insertion. One at a time.
class NoticeRecorder {
  public:
    explicit NoticeRecorder(const AdapterUnderTest& adapter);
    ~NoticeRecorder();
    NoticeRecorder(const NoticeRecorder&) = delete;
    NoticeRecorder& operator=(const NoticeRecorder&) = delete;

    /// What to register.
    static void OnNotice(_OS_ADAPT_DEVICESTATUS_TYPE status);

    std::vector<std::string> Notices() const;
    bool WaitForCount(size_t count) const;

    /// The next notice stays inside until LetGo.
    void Block() { m_Blocked = true; }
    void LetGo() { m_Blocked = false; }
    bool WaitUntilInside() const;

    /// Is called inside each notice, after the enumeration.
    void OnEach(std::function<void()> action) { m_Action = std::move(action); }

  private:
    void Record(_OS_ADAPT_DEVICESTATUS_TYPE status);

    const AdapterUnderTest& m_Adapter;
    std::function<void()> m_Action;
    std::atomic<bool> m_Blocked{false};
    std::atomic<bool> m_Inside{false};
    mutable std::mutex m_Mutex;
    std::vector<std::string> m_Notices;
};

#endif
