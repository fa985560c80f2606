// SPDX-License-Identifier: MIT
#ifndef KOVASMGR_TESTS_PROOF_FUZZ_LISTED_ADAPTER_H
#define KOVASMGR_TESTS_PROOF_FUZZ_LISTED_ADAPTER_H

#include "OSAdapt.h"

/// An adapter inside the process, bound to the manager without being loaded: it answers with one
/// record, whatever is in there, and counts its handles. A handle that is closed twice, or was never
/// given out, ends the process.
namespace ListedAdapter {

/// How its calls end.
enum class Mood {
    Works,
    Fails,
    Odd // opening succeeds and leaves no handle; closing fails; enumerating fails with the list filled
};

/// Makes it the manager's adapter, with an empty record and no handle open.
void Bind();

/// What an enumeration answers.
_OS_ADAPT_DEVICEPORTLIST& List();

void SetMood(Mood mood);
bool Enumerates();

/// Whether a handle has been given out and not been closed since.
bool IsOpen(int handle);

/// Fills the record with so many devices of so many ports each: "Device 0", "COM0" and onwards.
void Fill(int devices, int portsEach);

} // namespace ListedAdapter

#endif
