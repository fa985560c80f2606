// SPDX-License-Identifier: MIT
//
// The ports of a host by their names, and what they have received.
#ifndef KOVASMGR_TESTS_SIMULATOR_HOST_PORTS_H
#define KOVASMGR_TESTS_SIMULATOR_HOST_PORTS_H

#include <cstddef>
#include <string>
#include <utility>

/// The identifier of a port; -1 when it is not listed.
int PortNumber(const std::string& name);

/// How many devices and ports are listed.
std::pair<size_t, size_t> Listed();

/// Has what the port delivers kept from now on; once more after it has come back.
/// @return false when it is not listed any more, or eight other ports are listened to
bool Listen(const std::string& name);

/// All that the port has delivered.
std::string Received(const std::string& name);

/// A line for each port that was listened to: "NAME: BYTES", other bytes than plain ones as \xHH.
void PrintReceived();

#endif
