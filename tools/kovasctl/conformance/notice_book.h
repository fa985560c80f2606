// SPDX-License-Identifier: MIT
#ifndef KOVASCTL_CONFORMANCE_NOTICE_BOOK_H
#define KOVASCTL_CONFORMANCE_NOTICE_BOOK_H

#include <condition_variable>
#include <functional>
#include <mutex>
#include <string>
#include <vector>

#include "OSAdapt.h"

/// Every notice that the adapter gives to OnNotice. One of them in a process, as a callback knows
/// nothing but its status.
///
/// Threads: any.
class NoticeBook {
  public:
    using Action = std::function<void(_OS_ADAPT_DEVICESTATUS_TYPE status)>;

    static NoticeBook& Instance();

    /// The callback.
    static void OnNotice(_OS_ADAPT_DEVICESTATUS_TYPE status);

    /// What each notice does from now on, on the notifying thread; it must not throw.
    void SetAction(Action action);

    size_t Count() const;

    /// How many of them came from inside one of the seven.
    size_t CountInside() const;

    /// "pull-out, insertion"
    std::string Text() const;

    // Both wait for a notice of this kind that is not among the first "from" of all.
    bool WaitForStart(_OS_ADAPT_DEVICESTATUS_TYPE status, double seconds, size_t from = 0);
    bool WaitForEnd(_OS_ADAPT_DEVICESTATUS_TYPE status, double seconds, size_t from = 0);

  private:
    struct Notice {
        _OS_ADAPT_DEVICESTATUS_TYPE status;
        bool isInside;
        bool hasEnded;
    };

    void Take(_OS_ADAPT_DEVICESTATUS_TYPE status);
    bool WaitFor(_OS_ADAPT_DEVICESTATUS_TYPE status, bool isEnd, double seconds, size_t from);

    mutable std::mutex m_Mutex; // guards everything below
    std::condition_variable m_Changed;
    std::vector<Notice> m_Notices;
    Action m_Action;
};

#endif
