// SPDX-License-Identifier: MIT
#include "tools/kovasctl/conformance/provocation.h"

#include <string>

#include "tools/kovasctl/conformance/notice_book.h"
#include "tools/kovasctl/conformance/timed.h"
#include "tools/kovasctl/conformance/trial.h"
#include "tools/kovasctl/conformance/verdict.h"

namespace {

void Expect(bool hasCome, const std::string& notice) {
    if (!hasCome) {
        throw NotTried("no " + notice +
                       " notice came, see R17a; notices: " + NoticeBook::Instance().Text());
    }
}

} // namespace

HeldNotices::HeldNotices(const Trial& trial, _OS_ADAPT_DEVICESTATUS_TYPE status)
    : m_Gate(std::make_shared<Gate>()) {
    NoticeBook::Instance().SetAction(
        [gate = m_Gate, patience = trial.Patience(), status](_OS_ADAPT_DEVICESTATUS_TYPE told) {
            if (told == status) {
                gate->Wait(patience);
            }
        });
}

void HeldNotices::Release() { m_Gate->Open(); }

void UnplugUntilStart(Trial& trial) {
    trial.Step("waiting for the pull-out notice");
    const size_t before = NoticeBook::Instance().Count();
    trial.StartCommand(kUnplug);
    Expect(NoticeBook::Instance().WaitForStart(OS_ADAPT_DEVICE_PULLOUT, trial.Patience(), before),
           "pull-out");
}

void UnplugUntilEnd(Trial& trial) {
    const size_t before = NoticeBook::Instance().Count();
    UnplugUntilStart(trial);
    Expect(NoticeBook::Instance().WaitForEnd(OS_ADAPT_DEVICE_PULLOUT, trial.Patience(), before),
           "pull-out");
}

void PlugUntilEnd(Trial& trial) {
    trial.Step("waiting for the insertion notice");
    const size_t before = NoticeBook::Instance().Count();
    trial.StartCommand(kPlug);
    Expect(NoticeBook::Instance().WaitForEnd(OS_ADAPT_DEVICE_INSERT, trial.Patience(), before),
           "insertion");
}

void ExpectCommandEnds(Trial& trial, const char* name) {
    trial.Step(std::string("waiting for the end of the command of --") + name);
    const std::string failure = trial.WaitForCommand(name);
    if (!failure.empty()) {
        throw NotTried(std::string("the command of --") + name + " failed: " + failure);
    }
}
