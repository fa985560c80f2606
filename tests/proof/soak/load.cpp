// SPDX-License-Identifier: MIT
#include "tests/proof/soak/load.h"

#include <algorithm>

#include "tests/harness/wait_until.h"
#include "tests/proof/soak/call_watch.h"
#include "tests/proof/soak/far_ends.h"
#include "tests/proof/soak/hands.h"
#include "tests/proof/soak/host.h"
#include "tests/proof/soak/host_threads.h"
#include "tests/proof/soak/verdict.h"

namespace {

using std::chrono::seconds;
using verdict::Expect;

bool IsOneWrong() { return verdict::Count() > 0; }

// What is found wrong ends the run: what follows would say nothing new.
void RunFor(seconds time, LogKeeper& log) {
    const auto end = Stage::Clock::now() + time;
    while (Stage::Clock::now() < end && !IsOneWrong()) {
        WaitUntil(IsOneWrong, seconds(1));
        log.EmptyWhenLarge();
    }
}

// With no thread in a call, every byte arrived and nothing open but the ports that stay, what the
// process holds depends on nothing but the library.
ProcessState StateInPause(Stage& stage, const FarEnds& farEnds) {
    stage.Pause();
    Expect(
        WaitUntil([&] { return farEnds.HasAllArrived() || IsOneWrong(); }, std::chrono::minutes(1)),
        "bytes are missing");
    host::CloseComesAndGoes();
    return ProcessState::Now();
}

// After the faults the host's list is what is attached again, as soon as something moves.
void CheckEverythingIsBack(SoakAdapterControl& adapter, Hands& hands) {
    adapter.SwitchFaults(false);
    hands.PutEverythingIn();
    const auto list = host::Enumerate();
    host::CheckStays(*list);
    Expect(list->nDeviceCount == kDevices, "the list has not recovered");
}

} // namespace

Outcome Load(SoakAdapterControl& adapter, LogKeeper& log, seconds time) {
    Outcome outcome;
    host::Start();
    Hands hands(adapter);
    Stage stage;
    const FarEnds farEnds(adapter, stage);
    adapter.SwitchFaults(true);
    AddHostThreads(stage);
    stage.Add([&] { hands.Run(stage); });

    const seconds warmUp = std::clamp(time / 5, seconds(2), seconds(60));
    const auto start = Stage::Clock::now();
    RunFor(warmUp, log);
    outcome.warm = StateInPause(stage, farEnds);
    stage.Resume();
    RunFor(time - warmUp, log);
    outcome.last = StateInPause(stage, farEnds);
    outcome.seconds = std::chrono::duration<double>(Stage::Clock::now() - start).count();
    outcome.moves = hands.Moves();
    outcome.bytes = farEnds.Bytes();
    outcome.longestCallMs = call_watch::LongestMs();
    outcome.longestCall = call_watch::LongestCall();
    Expect(farEnds.HasEachMoved(), "a port that stays has moved no byte");
    CheckEverythingIsBack(adapter, hands);
    return outcome;
}
