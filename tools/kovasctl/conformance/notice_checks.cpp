// SPDX-License-Identifier: MIT
#include <pthread.h>

#include <atomic>
#include <vector>

#include "tools/kovasctl/conformance/checks.h"
#include "tools/kovasctl/conformance/notice_book.h"
#include "tools/kovasctl/conformance/provocation.h"
#include "tools/kovasctl/conformance/timed.h"
#include "tools/kovasctl/conformance/trial.h"
#include "tools/kovasctl/conformance/verdict.h"

namespace {

constexpr size_t kWantedStack = size_t{1024} * 1024;
constexpr size_t kGuard = size_t{64} * 1024; // what the system may keep of it

// Notices refer to these until the process ends.
std::atomic<const char*> s_Call{""};
std::atomic<bool> s_IsBlocked{false};
std::atomic<size_t> s_Stack{0};

std::vector<int> OpenAll(Trial& trial) {
    std::vector<int> handles;
    for (const std::string& port : trial.Options().ports) {
        handles.push_back(trial.Open(port));
    }
    return handles;
}

void UsePort(const Subject& adapter, int handle) {
    long count = 0;
    char buffer[8192];
    s_Call = "OS_ADAPT_Write";
    adapter.Write(handle, kLineEnd, sizeof kLineEnd, &count);
    s_Call = "OS_ADAPT_Read";
    adapter.Read(handle, buffer, 4096, &count);
}

void CallAll(const Subject& adapter, const std::vector<int>& handles, const std::string& port) {
    const auto roomy = std::make_unique<RoomyList>();
    s_Call = "OS_ADAPT_EnumDevicePortInfo";
    adapter.Enumerate(OS_ADAPT_ENUM_ALL, &roomy->list);
    for (const int handle : handles) {
        UsePort(adapter, handle);
    }
    s_Call = "OS_ADAPT_OpenPort";
    int handle = OS_ADAPT_NO_HANDLE;
    adapter.Open(port.c_str(), &handle);
    s_Call = "OS_ADAPT_ClosePort";
    adapter.Close(handle);
}

std::string PortToOpen(const Trial& trial) {
    return trial.Options().ports.empty() ? "there is no port of this name"
                                         : trial.Options().ports.front();
}

size_t StackOfThisThread() {
    pthread_attr_t attributes;
    if (pthread_getattr_np(pthread_self(), &attributes) != 0) {
        return 0;
    }
    size_t size = 0;
    pthread_attr_getstacksize(&attributes, &size);
    pthread_attr_destroy(&attributes);
    return size;
}

std::string Waited(const Trial& trial) { return DurationText(trial.Patience()); }

void ExpectTold(Trial& trial, const char* command, _OS_ADAPT_DEVICESTATUS_TYPE status,
                const std::string& notice) {
    const size_t before = NoticeBook::Instance().Count();
    trial.StartCommand(command);
    trial.Step(std::string("waiting for the command of --") + command);
    const std::string failure = trial.WaitForCommand(command);
    if (!failure.empty()) {
        throw Broken(std::string("the command of --") + command + " failed: " + failure);
    }
    trial.Step("waiting for the " + notice + " notice");
    if (!NoticeBook::Instance().WaitForEnd(status, trial.Patience(), before)) {
        throw Broken("no " + notice + " notice within " + Waited(trial) + " of the command of --" +
                     command + "; notices: " + NoticeBook::Instance().Text());
    }
}

} // namespace

std::string CheckNoticeFromOutside(Trial& trial) {
    const Subject& adapter = trial.Adapter();
    trial.Register();
    const std::vector<int> handles = OpenAll(trial);
    const auto callAll = [&] { CallAll(adapter, handles, PortToOpen(trial)); };
    callAll();
    if (trial.Options().HasCommands()) {
        trial.StartCommand(kUnplug);
        const auto hasCome = [&] {
            callAll();
            return NoticeBook::Instance().Count() > 0;
        };
        HoldsWithin(trial.Moment(), hasCome);
    }
    constexpr double kAWhile = 0.05;
    HoldsWithin(kAWhile, [&] { return callAll(), false; });
    if (NoticeBook::Instance().CountInside() > 0) {
        throw Broken("a notice came on a thread that was inside one of the seven");
    }
    return std::to_string(NoticeBook::Instance().Count()) + " notices, each from outside";
}

std::string CheckCallsInNotice(Trial& trial) {
    trial.Register();
    const Subject* adapter = &trial.Adapter();
    NoticeBook::Instance().SetAction(
        [=, handles = OpenAll(trial), port = PortToOpen(trial)](_OS_ADAPT_DEVICESTATUS_TYPE) {
            CallAll(*adapter, handles, port);
        });
    UnplugUntilStart(trial);
    trial.Step("calling from inside a notice");
    if (!NoticeBook::Instance().WaitForEnd(OS_ADAPT_DEVICE_PULLOUT, trial.Moment())) {
        throw Broken(std::string(s_Call) + " did not return inside a notice");
    }
    return "enumeration, opening, write, read and close returned inside a notice";
}

std::string CheckCallsBesideNotice(Trial& trial) {
    trial.Register();
    const Subject* adapter = &trial.Adapter();
    NoticeBook::Instance().SetAction([=, handles = OpenAll(trial), port = PortToOpen(trial),
                                      moment = trial.Moment()](_OS_ADAPT_DEVICESTATUS_TYPE) {
        const bool hasEnded = EndsWithin(moment, [=] { CallAll(*adapter, handles, port); });
        s_IsBlocked = s_IsBlocked || !hasEnded;
    });
    UnplugUntilEnd(trial);
    if (s_IsBlocked) {
        throw Broken(std::string(s_Call) +
                     " on another thread did not return until the notice had ended");
    }
    return "enumeration, opening, write, read and close on another thread returned during a notice";
}

std::string CheckNoticeStack(Trial& trial) {
    trial.Register();
    NoticeBook::Instance().SetAction(
        [](_OS_ADAPT_DEVICESTATUS_TYPE) { s_Stack = StackOfThisThread(); });
    UnplugUntilEnd(trial);
    std::string seen = std::to_string(s_Stack / 1024) + " KiB";
    if (s_Stack + kGuard < kWantedStack) {
        throw Broken("it has " + seen);
    }
    return seen;
}

std::string CheckChangesAreTold(Trial& trial) {
    trial.Enumerate();
    trial.Register();
    ExpectTold(trial, kUnplug, OS_ADAPT_DEVICE_PULLOUT, "pull-out");
    ExpectTold(trial, kPlug, OS_ADAPT_DEVICE_INSERT, "insertion");
    return "notices: " + NoticeBook::Instance().Text();
}

std::string CheckChangeBeforeRegistration(Trial& trial) {
    trial.Enumerate();
    trial.StartCommand(kUnplug);
    ExpectCommandEnds(trial, kUnplug);
    trial.Step("registering after the device went");
    trial.Register();
    if (!NoticeBook::Instance().WaitForEnd(OS_ADAPT_DEVICE_PULLOUT, trial.Patience())) {
        throw Broken("a device that went after the enumeration was not told within " +
                     Waited(trial) + " of the registration");
    }
    return "the device that went in between was told after the registration";
}

std::string CheckChangeDuringNotice(Trial& trial) {
    constexpr double kTimeToPlug = 1; // a command that waits for the notices takes longer
    trial.Register();
    HeldNotices held(trial, OS_ADAPT_DEVICE_PULLOUT);
    UnplugUntilStart(trial);
    trial.StartCommand(kPlug);
    trial.WaitForCommand(kPlug, kTimeToPlug);
    held.Release();
    ExpectCommandEnds(trial, kPlug);
    trial.Step("waiting for the insertion notice");
    if (!NoticeBook::Instance().WaitForEnd(OS_ADAPT_DEVICE_INSERT, trial.Patience())) {
        throw Broken("a device that came during a pull-out notice was not told within " +
                     Waited(trial) + "; notices: " + NoticeBook::Instance().Text());
    }
    return "the device that came during the pull-out notice was told after it";
}
