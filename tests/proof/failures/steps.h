// SPDX-License-Identifier: MIT
//
// The steps of the script, and what each may do when something fails: the promise that the sweeps
// keep.
#ifndef KOVASMGR_TESTS_PROOF_FAILURES_STEPS_H
#define KOVASMGR_TESTS_PROOF_FAILURES_STEPS_H

#include <vector>

#include "KOVASMgr.h"
#include "tests/proof/failures/script.h"
#include "tests/proof/failures/steered_adapter.h"

struct Step {
    Step(const char* stepName, long (*stepRun)(Stage&, int)) : name(stepName), run(stepRun) {}

    Step& Of(SteeredPort which);
    Step& WithoutManager(long code);
    Step& OfUnknownPort(long code);
    Step& WhenDone(long code);
    Step& FailsAt(unsigned troubles, long code = KOVAMGR_ERR_OSADAPT);
    Step& ThrowsAt(unsigned troubles);
    Step& NeedsOpenPort();
    Step& BringsPortsUpToDate();

    const char* name;
    long (*run)(Stage& stage, int portID);
    SteeredPort port = kSteeredPorts; ///< whose identifier it is given; kSteeredPorts: none
    long done = KOVAMGR_OK;           ///< its result when nothing fails
    long uninitialised = KOVAMGR_ERR_NOT_INIT;
    long unknown = KOVAMGR_ERR_PARAM;
    long failed = KOVAMGR_ERR_OSADAPT; ///< its result when it says that something failed,
    unsigned mayFail = 0;              ///< as it may at these troubles
    unsigned mayThrow = 0;             ///< the troubles whose exception it may pass on
    bool bringsUpToDate = false;       ///< when nothing fails, what is attached is known
    bool needsOpen = false;            ///< done is for an open port
};

const std::vector<Step>& Steps();

#endif
