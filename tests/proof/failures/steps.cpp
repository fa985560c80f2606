// SPDX-License-Identifier: MIT
#include "tests/proof/failures/steps.h"

#include "KOVASMgr.h"
#include "tests/proof/failures/fault.h"
#include "tests/proof/failures/host_calls.h"

namespace {

constexpr unsigned kInitTroubles = kNoMemory | kAdapterTroubles | kNoThread | kLogNotOpened;
constexpr unsigned kNoticeTroubles = kNoMemory | kAdapterExceptions;

Step InitStep(const char* name) {
    return Step(name, Init).WithoutManager(KOVAMGR_OK).FailsAt(kInitTroubles);
}

Step Notice(const char* name, long (*run)(Stage&, int)) {
    return Step(name, run)
        .WithoutManager(KOVAMGR_OK)
        .ThrowsAt(kNoticeTroubles)
        .BringsPortsUpToDate();
}

Step AdapterStep(const char* name, long (*run)(Stage&, int), SteeredPort port) {
    return Step(name, run).Of(port).FailsAt(kAdapterFails).ThrowsAt(kAdapterExceptions);
}

Step WriteStep(const char* name, SteeredPort port) {
    Step step = AdapterStep(name, Write, port);
    return step.WhenDone(5).OfUnknownPort(-1).FailsAt(kAdapterFails, -1).NeedsOpenPort();
}

} // namespace

Step& Step::Of(SteeredPort which) {
    port = which;
    return *this;
}

Step& Step::WithoutManager(long code) {
    uninitialised = code;
    return *this;
}

Step& Step::OfUnknownPort(long code) {
    unknown = code;
    return *this;
}

Step& Step::WhenDone(long code) {
    done = code;
    return *this;
}

Step& Step::FailsAt(unsigned troubles, long code) {
    mayFail = troubles;
    failed = code;
    return *this;
}

Step& Step::ThrowsAt(unsigned troubles) {
    mayThrow = troubles;
    return *this;
}

Step& Step::NeedsOpenPort() {
    needsOpen = true;
    return *this;
}

Step& Step::BringsPortsUpToDate() {
    bringsUpToDate = true;
    return *this;
}

const std::vector<Step>& Steps() {
    static const std::vector<Step> steps = {
        InitStep("Init"),
        InitStep("Init again"),
        Step("Enumerate", Enumerate),
        Step("RegisterRead", RegisterRead).Of(kFirstPort).ThrowsAt(kNoMemory),
        Step("RegisterState", RegisterState).ThrowsAt(kNoMemory),
        AdapterStep("Open", Open, kFirstPort),
        WriteStep("Write", kFirstPort),
        Step("Receive", Receive).WithoutManager(KOVAMGR_OK),
        Notice("Plug", Plug),
        Notice("Plug again", Plug),
        Step("Enumerate plugged", Enumerate),
        Step("RegisterRead of the guest", RegisterRead).Of(kGuestPort).ThrowsAt(kNoMemory),
        AdapterStep("Open the guest", Open, kGuestPort),
        WriteStep("Write to the guest", kGuestPort),
        Step("Receive from both", Receive).WithoutManager(KOVAMGR_OK),
        Notice("Pull", Pull),
        Notice("Pull again", Pull),
        Step("Enumerate pulled", Enumerate),
        AdapterStep("Close", Close, kFirstPort).OfUnknownPort(KOVAMGR_OK),
        AdapterStep("Open again", Open, kFirstPort),
        Step("UnRegisterRead", UnRegisterRead).Of(kFirstPort),
        Step("UnRegisterState", UnRegisterState),
        Step("Release", Release).WithoutManager(KOVAMGR_OK)};
    return steps;
}
