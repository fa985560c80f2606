// SPDX-License-Identifier: MIT
//
// The calls of which the script consists. Each counts and can be struck; what the test itself does
// around it cannot.
#ifndef KOVASMGR_TESTS_PROOF_FAILURES_HOST_CALLS_H
#define KOVASMGR_TESTS_PROOF_FAILURES_HOST_CALLS_H

#include "tests/proof/failures/script.h"
#include "tests/proof/failures/steered_adapter.h"

/// Results of a call that ended by an exception.
constexpr long kThrewBadAlloc = -1001;
constexpr long kThrewRuntimeError = -1002;

// The functions of the host's header; a port is an identifier.
long Init(Stage& stage, int);
long Release(Stage&, int);
long Enumerate(Stage&, int);
long RegisterRead(Stage&, int port);
long UnRegisterRead(Stage&, int port);
long RegisterState(Stage&, int);
long UnRegisterState(Stage&, int);
long Open(Stage&, int port);
long Close(Stage&, int port);
long Write(Stage&, int port);

/// Lets the read thread sweep some times; nothing when no port is open.
/// @return KOVAMGR_OK, or KOVAMGR_ERR_THREAD when it does not.
long Receive(Stage&, int);

/// The guest comes or goes, and the adapter's notice of it; none when nobody has registered.
long Plug(Stage& stage, int);
long Pull(Stage& stage, int);

/// The identifier that nobody has.
constexpr int kUnknownPort = 99;

/// The identifier of a port; kUnknownPort when it is not enumerated. Takes the port lock.
int PortID(SteeredPort port);

#endif
