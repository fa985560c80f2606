// SPDX-License-Identifier: MIT
#include "tests/proof/failures/script.h"

#include "KOVASMgr.h"
#include "tests/proof/failures/fault.h"
#include "tests/proof/failures/host_calls.h"
#include "tests/proof/failures/inspection.h"
#include "tests/proof/failures/steps.h"

namespace {

// What a step meets.
struct Situation {
    bool isInitialised;
    int portID;
    bool isOpen; // as the adapter sees it
    long strikes;
};

Situation SituationOf(const Step& step) {
    const bool hasPort = step.port != kSteeredPorts;
    return {KOVAMGR_GetPortState(1) == KOVAMGR_PORT_STATE_READY, PortID(step.port),
            hasPort && g_SteeredAdapter.handles[step.port] != 0, StrikeCount()};
}

long ExpectedOf(const Step& step, const Situation& before) {
    if (!before.isInitialised) {
        return step.uninitialised;
    }
    if (step.port != kSteeredPorts && before.portID == kUnknownPort) {
        return step.unknown;
    }
    const bool lacksHandle = step.needsOpen && !before.isOpen;
    return lacksHandle ? static_cast<long>(KOVAMGR_ERR_NO_HANDLE) : step.done;
}

bool IsAllowedWhenStruck(const Step& step, long result) {
    const Trouble trouble = ArmedTrouble();
    if (result == kThrewBadAlloc) {
        return (trouble & step.mayThrow & (kNoMemory | kAdapterBadAlloc)) != 0;
    }
    if (result == kThrewRuntimeError) {
        return (trouble & step.mayThrow & kAdapterThrows) != 0;
    }
    return result == step.failed && (trouble & step.mayFail) != 0;
}

// After a notice the host sees what is attached, also what an earlier one has failed to take in.
std::string CheckPorts(const Step& step) {
    const bool isResidentKnown = PortID(kFirstPort) != kUnknownPort;
    const bool isGuestKnown = PortID(kGuestPort) != kUnknownPort;
    return isResidentKnown && isGuestKnown == g_SteeredAdapter.isGuestAttached
               ? ""
               : std::string(step.name) + ": what is attached is not what is known\n";
}

void Play(Stage& stage, const Step& step) {
    const Situation before = SituationOf(step);
    const long result = step.run(stage, before.portID);
    const bool isStruck = StrikeCount() != before.strikes;
    const long expected = ExpectedOf(step, before);
    if (result != expected && !(isStruck && IsAllowedWhenStruck(step, result))) {
        stage.report += std::string(step.name) + " gives " + std::to_string(result) +
                        " in place of " + std::to_string(expected) +
                        (isStruck ? ", struck\n" : "\n");
    }
    if (step.bringsUpToDate && before.isInitialised && !isStruck) {
        stage.report += CheckPorts(step);
    }
    stage.report += Inspect(stage.prober, step.name);
}

} // namespace

void PlayScript(Stage& stage) {
    for (const Step& step : Steps()) {
        Play(stage, step);
    }
}
