// SPDX-License-Identifier: MIT
#ifndef KOVASMGR_TESTS_PROOF_FAILURES_SCRIPT_H
#define KOVASMGR_TESTS_PROOF_FAILURES_SCRIPT_H

#include <string>

#include "tests/proof/failures/side_thread.h"

/// What a step needs, and the threads beside that of the host. Make it on a spared thread, before
/// the fault is armed.
struct Stage {
    std::string logDirectory;
    SideThread notifier; ///< whose calls of the manager count
    SideThread prober;   ///< holds no lock: what it can take, everybody can
    SideThread heir;     ///< plays the script once more
    std::string report;  ///< what did not hold, a line each
};

/// The life of a host, on the calling thread, which is spared but in its calls of the library:
/// initialises twice, enumerates, registers callbacks of both kinds, opens, writes, receives, has a
/// device plugged and pulled, closes, un-registers and releases. After each step the report tells
/// whether
/// - the result is not the one of a run without a fault, nor, if the fault struck during the step,
///   the one that is documented for it;
/// - another thread cannot take every lock;
/// - the two containers of ports are out of step.
void PlayScript(Stage& stage);

/// Callbacks that ran since the process began.
long BytesReceived();
long NoticesReceived();

#endif
