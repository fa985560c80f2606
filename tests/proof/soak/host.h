// SPDX-License-Identifier: MIT
#ifndef KOVASMGR_TESTS_PROOF_SOAK_HOST_H
#define KOVASMGR_TESTS_PROOF_SOAK_HOST_H

#include <cstdint>
#include <memory>

#include "KOVASMgr.h"
#include "tests/proof/soak/numbered_bytes.h"
#include "tests/proof/soak/soak_adapter.h"

/// The host's view of the library: the ports that stay, open from start to end, and what came over
/// them. One per process: a read callback knows its port by being that port's own.
///
/// Threads: any, except where stated.
namespace host {

struct StayPort {
    int id = -1;
    NumberedBytes sent;     // the thread's that writes to the port
    NumberedBytes received; // the read thread's
};

StayPort& Stay(std::size_t port);

/// Finds the ports that stay, registers the callbacks and opens them. By one thread, first.
void Start();

/// Sends so many of a port's next bytes (512 at most), the rest of a short write and all of a failed
/// one again. One thread a port.
void Send(std::size_t port, std::size_t count);

/// Null when the library refuses.
std::unique_ptr<_KOVAMGR_DEVICEINFOLIST> Enumerate();

/// Compares a list with what must be in it at any time: the ports that stay, each with the
/// identifier that it had first.
void CheckStays(const _KOVAMGR_DEVICEINFOLIST& list);

/// Closes what is open of the devices that come and go, however often it takes.
void CloseComesAndGoes();

/// Notices so far.
long Insertions();
long PullOuts();

/// Does nothing; for being registered beside those that look.
void Ignore(void* data, int length);
void IgnoreNotice(_KOVAMGR_DEV_STATE_TYPE_ state);

} // namespace host

#endif
