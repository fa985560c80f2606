// SPDX-License-Identifier: MIT
#ifndef KOVASMGR_TESTS_PROOF_UNPLUG_HOST_OPERATION_H
#define KOVASMGR_TESTS_PROOF_UNPLUG_HOST_OPERATION_H

#include "KOVASMgr.h"
#include "tests/proof/unplug/cell.h"

/// What an operation of the host is about.
struct Subject {
    int port;
    KOVAMGR_READ_CALLBACK registered; ///< with the port
    KOVAMGR_READ_CALLBACK further;    ///< not registered
    KOVAMGR_DEV_STATE_CALLBACK state; ///< is registered or un-registered
};

/// Calls the function that the operation consists of; for kReceive and kEnumerate there is nothing
/// to do here.
/// @return its result
int Perform(Operation operation, const Subject& subject);

#endif
