// SPDX-License-Identifier: MIT
#include <memory>
#include <mutex>
#include <utility>

#include "tools/kovasctl/conformance/checks.h"
#include "tools/kovasctl/conformance/notice_book.h"
#include "tools/kovasctl/conformance/provocation.h"
#include "tools/kovasctl/conformance/timed.h"
#include "tools/kovasctl/conformance/trial.h"
#include "tools/kovasctl/conformance/verdict.h"

namespace {

/// What enumerations inside notices answer. Outlives the check: a notice may come late.
class AnswersInside {
  public:
    void Keep(_OS_ADAPT_DEVICESTATUS_TYPE status, Listing answer) {
        const std::lock_guard<std::mutex> lock(m_Mutex);
        (status == OS_ADAPT_DEVICE_PULLOUT ? m_PullOut : m_Insertion) = std::move(answer);
    }
    Listing PullOut() const {
        const std::lock_guard<std::mutex> lock(m_Mutex);
        return m_PullOut;
    }
    Listing Insertion() const {
        const std::lock_guard<std::mutex> lock(m_Mutex);
        return m_Insertion;
    }

  private:
    mutable std::mutex m_Mutex; // guards everything below
    Listing m_PullOut;
    Listing m_Insertion;
};

Listing Answer(const Subject& adapter) {
    const auto roomy = std::make_unique<RoomyList>();
    adapter.Enumerate(OS_ADAPT_ENUM_ALL, &roomy->list);
    return ToListing(roomy->list);
}

std::shared_ptr<AnswersInside> EnumerateInNotices(Trial& trial) {
    auto answers = std::make_shared<AnswersInside>();
    const Subject* adapter = &trial.Adapter();
    NoticeBook::Instance().SetAction(
        [=](_OS_ADAPT_DEVICESTATUS_TYPE status) { answers->Keep(status, Answer(*adapter)); });
    return answers;
}

std::string Ports(const Listing& listing) { return std::to_string(listing.size()) + " ports"; }

} // namespace

std::string CheckPullOutAnswer(Trial& trial) {
    trial.Register();
    const auto inside = EnumerateInNotices(trial);
    const Listing last = trial.Enumerate();
    UnplugUntilEnd(trial);
    const std::string added = Missing(inside->PullOut(), last);
    if (!added.empty()) {
        throw Broken("inside a pull-out notice there was " + added +
                     ", which the last answer did not have");
    }
    return Ports(last) + " before, " + Ports(inside->PullOut()) + " of them inside the notice";
}

std::string CheckInsertionAnswer(Trial& trial) {
    trial.Register();
    UnplugUntilEnd(trial);
    ExpectCommandEnds(trial, kUnplug);
    const auto inside = EnumerateInNotices(trial);
    const Listing last = trial.Enumerate();
    if (last.empty()) {
        throw NotTried("no other port is attached");
    }
    PlugUntilEnd(trial);
    const std::string lost = Missing(last, inside->Insertion());
    if (!lost.empty()) {
        throw Broken("inside an insertion notice " + lost +
                     " was missing, which the last answer had");
    }
    return Ports(last) + " before, and still there inside the notice";
}

std::string CheckFrozenAnswer(Trial& trial) {
    constexpr double kTimeToPlug = 1; // a command that waits for the notices takes longer
    constexpr double kTimeToBeWrong = 0.05;
    const auto change = std::make_shared<std::string>();
    const Subject* adapter = &trial.Adapter();
    Trial* shared = &trial;
    trial.Register();
    NoticeBook::Instance().SetAction([=](_OS_ADAPT_DEVICESTATUS_TYPE status) {
        if (status != OS_ADAPT_DEVICE_PULLOUT) {
            return;
        }
        const Listing first = Answer(*adapter);
        shared->StartCommand(kPlug);
        shared->WaitForCommand(kPlug, kTimeToPlug);
        HoldsWithin(kTimeToBeWrong, [&] {
            *change = Missing(Answer(*adapter), first);
            return !change->empty();
        });
    });
    UnplugUntilEnd(trial);
    if (!change->empty()) {
        throw Broken(*change + " appeared while a pull-out notice ran");
    }
    return "the answer stayed the same while the device was plugged in during the notice";
}

std::string CheckNoticeMatchesAnswer(Trial& trial) {
    trial.Register();
    const auto inside = EnumerateInNotices(trial);
    const Listing all = trial.Enumerate();
    UnplugUntilEnd(trial);
    const std::string gone = Missing(all, inside->PullOut());
    if (gone.empty()) {
        throw Broken("inside the pull-out notice all ports were still there");
    }
    ExpectCommandEnds(trial, kUnplug);
    const Listing rest = trial.Enumerate();
    PlugUntilEnd(trial);
    const std::string came = Missing(inside->Insertion(), rest);
    if (came.empty()) {
        throw Broken("inside the insertion notice no port was new");
    }
    return "gone inside the pull-out notice: " + gone +
           "; new inside the insertion notice: " + came;
}
