// SPDX-License-Identifier: MIT
#ifndef KOVASMGR_TESTS_PROOF_CALLBACKS_INSIDE_CALLS_H
#define KOVASMGR_TESTS_PROOF_CALLBACKS_INSIDE_CALLS_H

#include <iosfwd>
#include <string>
#include <vector>

/// A call that a callback makes, and its result there. Port 1 is open and has the read callbacks
/// OnRead<1> and OnRead<2>, port 2 is not open, port 9 does not exist; OnState<1> and OnState<2> are
/// registered.
struct InsideCall {
    const char* name; ///< of the test
    int (*call)();
    int expected;
};

std::ostream& operator<<(std::ostream& out, const InsideCall& call);

/// All that the library exports to C, each function with good arguments and with bad ones. Those
/// that hosts are told not to call from there are among them: what comes of it is settled as well.
const std::vector<InsideCall>& InsideCalls();

#endif
