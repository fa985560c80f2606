// SPDX-License-Identifier: MIT
#ifndef KOVASMGR_TESTS_PROOF_SOAK_FAULTS_H
#define KOVASMGR_TESTS_PROOF_SOAK_FAULTS_H

/// What can go wrong in the adapter under load.
enum class Fault { kOpen, kClose, kWrite, kShortWrite, kRead, kEnumerate };

/// Faults at a steady rate: every so many calls of a kind one fails, while they are switched on.
///
/// Threads: any.
namespace faults {

void SwitchOn(bool isOn);

/// Whether this call is the one.
bool IsDue(Fault fault);

/// How many there were.
long Injected();

} // namespace faults

#endif
