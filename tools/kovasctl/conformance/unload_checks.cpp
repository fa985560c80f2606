// SPDX-License-Identifier: MIT
#include "tools/kovasctl/conformance/checks.h"
#include "tools/kovasctl/conformance/notice_book.h"
#include "tools/kovasctl/conformance/resources.h"
#include "tools/kovasctl/conformance/timed.h"
#include "tools/kovasctl/conformance/trial.h"
#include "tools/kovasctl/conformance/verdict.h"

namespace {

void UsePort(Trial& trial, int handle) {
    long count = 0;
    char buffer[8192];
    trial.Adapter().Write(handle, kLineEnd, sizeof kLineEnd, &count);
    trial.Adapter().Read(handle, buffer, 4096, &count);
}

void UsePorts(Trial& trial) {
    for (const std::string& port : trial.Options().ports) {
        trial.Step("using '" + port + "'");
        const int handle = trial.Open(port);
        UsePort(trial, handle);
        trial.Adapter().Close(handle);
    }
}

void UnRegister(Trial& trial) {
    trial.Step("un-registering");
    trial.Adapter().UnRegister(NoticeBook::OnNotice);
}

// A thread that has been joined is still seen for a moment.
void ExpectNothingLeft(const Trial& trial, const Resources& before) {
    if (!HoldsWithin(trial.Moment(), [&] { return before.Excess().empty(); })) {
        throw Broken("left: " + before.Excess());
    }
}

Listing UseAndUnload(Trial& trial) {
    Listing listing = trial.Enumerate();
    trial.Step("registering");
    trial.Register();
    UnRegister(trial);
    trial.Unload();
    return listing;
}

} // namespace

std::string CheckNothingIsLeft(Trial& trial) {
    const Resources before;
    trial.Enumerate();
    trial.Register();
    UsePorts(trial);
    UnRegister(trial);
    ExpectNothingLeft(trial, before);
    return "threads and descriptors are those of before it was loaded";
}

std::string CheckItUnloads(Trial& trial) {
    UseAndUnload(trial);
    if (Subject::IsLoaded(trial.Options().file)) {
        throw Broken("it is still loaded after it was closed");
    }
    return "it was gone after it was closed";
}

std::string CheckSecondLoad(Trial& trial) {
    const Listing first = UseAndUnload(trial);
    try {
        if (UseAndUnload(trial) != first) {
            throw Broken("the second time its list of ports is another one");
        }
    } catch (const NotTried& failure) {
        throw Broken(std::string("the second time ") + failure.what());
    }
    return "it was loaded, used and unloaded twice";
}

std::string CheckUnloadWithOpenPorts(Trial& trial) {
    const Resources before;
    trial.Enumerate();
    trial.Register();
    for (const std::string& port : trial.Options().ports) {
        UsePort(trial, trial.Open(port));
    }
    UnRegister(trial);
    trial.Unload();
    ExpectNothingLeft(trial, before);
    return std::to_string(trial.Options().ports.size()) + " ports were open";
}
