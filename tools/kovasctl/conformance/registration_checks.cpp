// SPDX-License-Identifier: MIT
#include <atomic>
#include <memory>

#include "tools/kovasctl/conformance/checks.h"
#include "tools/kovasctl/conformance/notice_book.h"
#include "tools/kovasctl/conformance/provocation.h"
#include "tools/kovasctl/conformance/timed.h"
#include "tools/kovasctl/conformance/trial.h"
#include "tools/kovasctl/conformance/verdict.h"

namespace {

std::atomic<int> s_Replaced{0}; // notices to the callback that was replaced

void OnReplaced(_OS_ADAPT_DEVICESTATUS_TYPE) { ++s_Replaced; }

void ExpectSuccess(const std::string& what, int result) {
    if (result != OS_ADAPT_OK) {
        throw Broken(what + " returned " + std::to_string(result));
    }
}

/// Un-registers on a thread of its own.
std::shared_ptr<Gate> StartUnRegistration(Trial& trial) {
    auto hasEnded = std::make_shared<Gate>();
    const Subject* adapter = &trial.Adapter();
    EndsWithin(0, [=] {
        adapter->UnRegister(NoticeBook::OnNotice);
        hasEnded->Open();
    });
    return hasEnded;
}

} // namespace

// The callback waits for the end of the registration, as the manager's does for its lock.
std::string CheckRegistrationIsPrompt(Trial& trial) {
    const auto isRegistered = std::make_shared<Gate>();
    const auto hasGivenUp = std::make_shared<std::atomic<bool>>(false);
    NoticeBook::Instance().SetAction([=, moment = trial.Moment()](_OS_ADAPT_DEVICESTATUS_TYPE) {
        if (!isRegistered->Wait(moment)) {
            *hasGivenUp = true;
        }
    });
    trial.Enumerate();
    trial.Step("registering a callback that waits for the end of the registration");
    const Stopwatch watch;
    trial.Register();
    const double time = watch.Seconds();
    isRegistered->Open();
    if (*hasGivenUp) {
        throw Broken("the registration waited for a notice, which waited for the registration");
    }
    return "it returned within " + DurationText(time);
}

std::string CheckRegistrationDuringNotice(Trial& trial) {
    trial.Register();
    const HeldNotices held(trial, OS_ADAPT_DEVICE_PULLOUT);
    UnplugUntilStart(trial);
    trial.Step("registering while a notice runs");
    const Subject* adapter = &trial.Adapter();
    if (!EndsWithin(trial.Moment(), [=] { adapter->Register(NoticeBook::OnNotice); })) {
        throw Broken("a registration did not return while a notice ran");
    }
    return "a registration returned while a notice ran";
}

std::string CheckRegistrationReplaces(Trial& trial) {
    if (trial.Adapter().Register(OnReplaced) != OS_ADAPT_OK) {
        throw NotTried("the registration fails");
    }
    trial.Register();
    trial.Step("waiting for the pull-out notice");
    const size_t before = NoticeBook::Instance().Count();
    const int replacedBefore = s_Replaced;
    trial.StartCommand(kUnplug);
    const auto isAnyCalled = [=] {
        return NoticeBook::Instance().Count() > before || s_Replaced > replacedBefore;
    };
    HoldsWithin(trial.Patience(), isAnyCalled);
    if (s_Replaced > replacedBefore) {
        throw Broken("the callback that had been replaced was called");
    }
    if (NoticeBook::Instance().Count() == before) {
        throw Broken("after a second registration no notice came");
    }
    return "the second callback was called, and the first was not";
}

std::string CheckUnRegistrationAlone(Trial& trial) {
    const Subject& adapter = trial.Adapter();
    trial.Step("un-registering without a registration");
    ExpectSuccess("un-registration without a registration",
                  adapter.UnRegister(NoticeBook::OnNotice));
    trial.Register();
    adapter.UnRegister(NoticeBook::OnNotice);
    trial.Step("un-registering a second time");
    ExpectSuccess("a second un-registration", adapter.UnRegister(NoticeBook::OnNotice));
    return "it succeeded before any registration, and a second time";
}

std::string CheckUnRegistrationWaits(Trial& trial) {
    constexpr double kTimeToBeWrong = 0.3;
    trial.Register();
    HeldNotices held(trial, OS_ADAPT_DEVICE_PULLOUT);
    UnplugUntilStart(trial);
    trial.Step("un-registering while a notice runs");
    const auto hasEnded = StartUnRegistration(trial);
    if (hasEnded->Wait(kTimeToBeWrong)) {
        throw Broken("un-registration returned while a notice ran");
    }
    held.Release();
    if (!hasEnded->Wait(trial.Moment())) {
        throw Broken("un-registration did not return after the notice had ended");
    }
    return "it returned when the notice had ended";
}

// Enumerations go on, as those of a later manager would.
std::string CheckSilenceAfterUnRegistration(Trial& trial) {
    constexpr double kTimeToBeWrong = 0.15;
    trial.Register();
    UnplugUntilEnd(trial);
    trial.Step("un-registering");
    trial.Adapter().UnRegister(NoticeBook::OnNotice);
    const size_t before = NoticeBook::Instance().Count();
    trial.StartCommand(kPlug);
    trial.WaitForCommand(kPlug); // where nobody listens it may well fail
    trial.Step("enumerating after the un-registration");
    const bool isSilent = StaysFalse(kTimeToBeWrong, [&] {
        trial.Enumerate();
        return NoticeBook::Instance().Count() > before;
    });
    if (!isSilent) {
        throw Broken("a notice came after the un-registration");
    }
    return "no notice came when the device was plugged in after it";
}

std::string CheckUnRegistrationInNotice(Trial& trial) {
    const Subject* adapter = &trial.Adapter();
    trial.Register();
    NoticeBook::Instance().SetAction(
        [=](_OS_ADAPT_DEVICESTATUS_TYPE) { adapter->UnRegister(NoticeBook::OnNotice); });
    UnplugUntilStart(trial);
    trial.Step("un-registering from inside a notice");
    if (!NoticeBook::Instance().WaitForEnd(OS_ADAPT_DEVICE_PULLOUT, trial.Moment())) {
        throw Broken("un-registration did not return inside the notice");
    }
    return "it returned inside the notice";
}
